#pragma once

#include <optional>

namespace teralune {

/// Which host the notebook screen runs in.
enum class HostMode {
    teralune = 0,
    graphingCalculator = 1,
    previewList = 2, ///< a read-only preview of a shared list
};

constexpr std::optional<HostMode> hostMode(int rawValue) {
    return rawValue >= 0 && rawValue <= 2 ? std::optional(static_cast<HostMode>(rawValue)) : std::nullopt;
}

} // namespace teralune
