#pragma once

namespace teralune {

/// How solutions show their steps. The raw values are stored and sent.
enum class StepOption {
    showSteps = 0,
    hideSteps = 1,
    stepByStep = 2,
};

} // namespace teralune
