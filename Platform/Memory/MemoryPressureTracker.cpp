#include "Platform/Memory/MemoryPressureTracker.h"

namespace teralune {

void MemoryPressureTracker::signalled(MemoryPressureLevel level, TimePoint now) {
    if (level == MemoryPressureLevel::warning)
        warningEnd_ = now + quietPeriod_;
    else if (level == MemoryPressureLevel::critical)
        criticalEnd_ = now + quietPeriod_;
}

std::optional<MemoryPressureLevel> MemoryPressureTracker::takeChange(TimePoint now) {
    const MemoryPressureLevel level = levelAt(now);
    if (level == last_)
        return std::nullopt;
    last_ = level;
    return level;
}

std::optional<MemoryPressureTracker::TimePoint> MemoryPressureTracker::nextChange() const {
    switch (last_) {
    case MemoryPressureLevel::critical:
        return criticalEnd_;
    case MemoryPressureLevel::warning:
        return warningEnd_;
    case MemoryPressureLevel::normal:
        break;
    }
    return std::nullopt;
}

MemoryPressureLevel MemoryPressureTracker::levelAt(TimePoint now) const {
    if (criticalEnd_ && now < *criticalEnd_)
        return MemoryPressureLevel::critical;
    if (warningEnd_ && now < *warningEnd_)
        return MemoryPressureLevel::warning;
    return MemoryPressureLevel::normal;
}

} // namespace teralune
