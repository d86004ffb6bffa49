#include "Platform/Memory/MemoryPressureTracker.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

using Level = MemoryPressureLevel;
using std::chrono::seconds;

TEST(MemoryPressureTracker, tells_each_change_once_and_the_end_after_a_quiet_period) {
    MemoryPressureTracker tracker(seconds(10));
    const MemoryPressureTracker::TimePoint start{};
    struct Moment {
        int second;
        std::optional<Level> signal;
        std::optional<Level> change;
        std::optional<int> next;
    };
    const Moment moments[] = {
        {0, std::nullopt, std::nullopt, std::nullopt},   {1, Level::warning, Level::warning, 11},
        {3, Level::warning, std::nullopt, 13},           {5, Level::critical, Level::critical, 15},
        {9, Level::warning, std::nullopt, 15},           {14, std::nullopt, std::nullopt, 15},
        {15, std::nullopt, Level::warning, 19},          {19, std::nullopt, Level::normal, std::nullopt},
        {30, Level::critical, Level::critical, 40},      {40, std::nullopt, Level::normal, std::nullopt},
        {41, Level::normal, std::nullopt, std::nullopt},
    };
    for (const Moment& moment : moments) {
        const auto now = start + seconds(moment.second);
        if (moment.signal)
            tracker.signalled(*moment.signal, now);
        EXPECT_EQ(tracker.takeChange(now), moment.change) << moment.second;
        const auto next = moment.next ? std::optional(start + seconds(*moment.next)) : std::nullopt;
        EXPECT_TRUE(tracker.nextChange() == next) << moment.second;
    }
}

} // namespace
} // namespace teralune
