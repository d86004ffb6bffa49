#pragma once

#include <algorithm>
#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace teralune::benchmarks {

using Duration = std::chrono::duration<double, std::milli>;

/// The time that the work takes.
template<std::invocable Work>
Duration timed(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    std::forward<Work>(work)();
    return std::chrono::steady_clock::now() - start;
}

/// What a comparison found: the median of the rounds' ratios, and the spread around it.
struct Ratio {
    double median = 0;
    double lowest = 0;
    double highest = 0;
    Duration measured{};
    Duration baseline{};
};

template<class Value>
Value medianOf(std::vector<Value> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Runs the two in turn, the one that goes first alternating, and compares them round by round: what slows
/// the machine down for a while slows both down, so that a ratio means something where a time does not. Each
/// callable does its own preparation and returns the Duration of the part that counts. One round more than
/// asked for is run first and dropped.
template<class Measured, class Baseline>
requires std::same_as<std::invoke_result_t<Measured&>, Duration> &&
    std::same_as<std::invoke_result_t<Baseline&>, Duration>
        Ratio interleavedRatio(std::size_t rounds, Measured&& measured, Baseline&& baseline) {
    std::vector<double> ratios;
    std::vector<Duration> ours;
    std::vector<Duration> theirs;
    for (std::size_t round = 0; round <= rounds; ++round) {
        Duration our{};
        Duration their{};
        if (round % 2 == 0) {
            our = measured();
            their = baseline();
        } else {
            their = baseline();
            our = measured();
        }
        if (round > 0) {
            ratios.push_back(our / their);
            ours.push_back(our);
            theirs.push_back(their);
        }
    }
    const auto [lowest, highest] = std::minmax_element(ratios.begin(), ratios.end());
    return {medianOf(ratios), *lowest, *highest, medianOf(ours), medianOf(theirs)};
}

/// One line for people; returns whether the goal, where there is one, was met.
inline bool printRatio(const std::string& name, const Ratio& ratio, std::optional<double> goal = {}) {
    const bool met = !goal || ratio.median <= *goal;
    std::printf("%-52s %6.3f  (%.3f to %.3f)  %10.3f ms against %10.3f ms", name.c_str(), ratio.median,
                ratio.lowest, ratio.highest, ratio.measured.count(), ratio.baseline.count());
    if (goal) {
        std::printf("  goal %.2f %s", *goal, met ? "met" : "missed");
    }
    std::printf("\n");
    std::fflush(stdout);
    return met;
}

} // namespace teralune::benchmarks
