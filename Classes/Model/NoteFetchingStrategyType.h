#pragma once

#include "Classes/Interfaces/SolverEndpointsType.h"
#include "Platform/Foundation/UniqueFunction.h"

#include <optional>
#include <string>

namespace teralune {

/// How fetching a note's solution ended.
struct FetchedNoteData {
    bool success = false;
    /// The server answered, but knows no steps.
    bool isNull = false;
    std::optional<std::string> steps;
    std::optional<std::string> topic;
};

/// How a host app gets a single note's solution from the server.
class NoteFetchingStrategyType {
public:
    using Completion = UniqueFunction<void(FetchedNoteData)>;

    virtual ~NoteFetchingStrategyType() = default;

    /// The completion runs exactly once, on a thread of the strategy's choosing.
    virtual void fetchSingleNoteData(const std::string& query, ShouldLog shouldLogRequest,
                                     SolutionOrigin origin, Completion completion) = 0;
};

} // namespace teralune
