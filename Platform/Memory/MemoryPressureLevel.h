#pragma once

namespace teralune {

/// How short of memory the system is: not, so that some work waits for memory, or so that all work does.
enum class MemoryPressureLevel {
    normal,
    warning,
    critical,
};

} // namespace teralune
