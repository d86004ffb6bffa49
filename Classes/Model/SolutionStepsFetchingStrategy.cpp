#include "Classes/Model/SolutionStepsFetchingStrategy.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/NetworkingType.h"

#include <utility>

namespace teralune {

void SolutionStepsFetchingStrategy::fetchSingleNoteData(const std::string& query, ShouldLog shouldLogRequest,
                                                        SolutionOrigin origin, Completion completion) {
    application_.networking().getSolutionSteps(
        query, shouldLogRequest, origin, RequestOnlySolution{false},
        [completion = std::move(completion)](SolutionStepsReply reply) mutable {
            FetchedNoteData data{reply.success, reply.isNull, std::move(reply.body), std::nullopt};
            if (reply.metadata)
                data.topic = std::move(reply.metadata->topic);
            completion(std::move(data));
        });
}

} // namespace teralune
