#pragma once

#include "Classes/Model/NoteFetchingStrategyType.h"

namespace teralune {

class IApplication;

/// Asks the steps endpoint, for hosts whose notes are problems. The topic is the one that the steps name. Its
/// completion runs on the main queue.
class SolutionStepsFetchingStrategy final : public NoteFetchingStrategyType {
public:
    explicit SolutionStepsFetchingStrategy(IApplication& application) : application_(application) {}

    void fetchSingleNoteData(const std::string& query, ShouldLog shouldLogRequest, SolutionOrigin origin,
                             Completion completion) override;

private:
    IApplication& application_;
};

} // namespace teralune
