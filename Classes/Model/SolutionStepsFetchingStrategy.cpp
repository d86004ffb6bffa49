#include "Classes/Model/SolutionStepsFetchingStrategy.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/NetworkingType.h"

#include <utility>

namespace teralune {

void SolutionStepsFetchingStrategy::fetchSingleNoteData(const std::string& query, ShouldLog shouldLogRequest,
                                                        SolutionOrigin origin, Completion completion) {
    application_.networking().getSolutionSteps(
        query, shouldLogRequest, origin, RequestOnlySolution{false},
        [&application = application_, completion = std::move(completion)](SolutionStepsReply reply) mutable {
            FetchedNoteData data{reply.success, reply.isNull, std::move(reply.body), std::nullopt};
            if (data.steps) {
                if (const auto metadata = application.networking().parseJsonSteps(*data.steps))
                    data.topic = metadata->topic;
            }
            completion(std::move(data));
        });
}

} // namespace teralune
