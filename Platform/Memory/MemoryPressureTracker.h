#pragma once

#include "Platform/Memory/MemoryPressureLevel.h"

#include <chrono>
#include <optional>

namespace teralune {

/// Makes changes of level out of the system's signals, which come again and again while the pressure lasts
/// and never say that it has ended. A level ends when it was not signalled for a while. Pure; used by one
/// thread.
class MemoryPressureTracker {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit MemoryPressureTracker(std::chrono::milliseconds quietPeriod) : quietPeriod_(quietPeriod) {}

    void signalled(MemoryPressureLevel level, TimePoint now);
    /// The level, if it is another than the last one that this returned. Begins at normal.
    std::optional<MemoryPressureLevel> takeChange(TimePoint now);
    /// When to ask again even if nothing is signalled.
    std::optional<TimePoint> nextChange() const;

private:
    MemoryPressureLevel levelAt(TimePoint now) const;

    std::chrono::milliseconds quietPeriod_;
    std::optional<TimePoint> warningEnd_;
    std::optional<TimePoint> criticalEnd_;
    MemoryPressureLevel last_ = MemoryPressureLevel::normal;
};

} // namespace teralune
