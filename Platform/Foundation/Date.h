#pragma once

#include <chrono>

namespace teralune {

/// A moment in UTC, to the millisecond.
using Date = std::chrono::sys_time<std::chrono::milliseconds>;

/// The time of day, as a service so that tests can set it. Callable from any thread.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Date now() const = 0;
};

class SystemClock final : public Clock {
public:
    Date now() const override {
        return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
    }
};

} // namespace teralune
