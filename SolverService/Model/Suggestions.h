#pragma once

#include "SolverService/Model/ServerModel.h"

#include <string>
#include <vector>

namespace teralune::service {

/// A problem that may be what the user is typing.
struct SuggestedProblem {
    std::string problem;
    std::string bucket;
    /// How often it was asked, and the same as a share of the most asked one of all.
    std::int64_t popularity = 0;
    double normalizedPopularity = 0;
    /// Whether it begins with what was typed.
    bool isPrefix = false;
};

/// The index of problems that people ask. Used from any thread.
class Suggestions {
public:
    /// Fills an empty index with textbook problems.
    explicit Suggestions(ServerModel& model);

    /// Counts a solved problem.
    void count(const std::string& problem, const std::string& bucket);

    /// The problems with the typed text in them, blanks set aside: first those that begin with it, then by
    /// popularity.
    std::vector<SuggestedProblem> suggest(const std::string& typed);

private:
    ServerModel& model_;
};

} // namespace teralune::service
