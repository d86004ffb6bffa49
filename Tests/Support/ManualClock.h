#pragma once

#include "Platform/Foundation/Date.h"

#include <atomic>

namespace teralune {

/// A clock that stands still until the test moves it; it begins at 2020-01-01 00:00:00 UTC. Any thread may
/// read it and move it.
class ManualClock final : public Clock {
public:
    Date now() const override { return Date(std::chrono::milliseconds(now_.load())); }
    void set(Date now) { now_ = now.time_since_epoch().count(); }
    void advance(std::chrono::milliseconds step) { now_ += step.count(); }

private:
    std::atomic<std::int64_t> now_ = 1'577'836'800'000;
};

} // namespace teralune
