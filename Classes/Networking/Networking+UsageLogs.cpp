#include "Classes/Networking/Networking.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/UserAccountModelType.h"

namespace teralune {

void Networking::sendDetailedLog(const DetailedLog& log) {
    sendDetailedLogExtraFields(log, {});
}

void Networking::sendDetailedLogExtraFields(const DetailedLog& detailedLog, const SolutionSubject& subject) {
    const std::string activity(word(detailedLog.activity));
    log("Detailed log: %@ - %@ / %@", {activity, detailedLog.info1, detailedLog.info2.value_or("(none)")});
    HttpParameters parameters{
        {"type", activity},
        {"connected", application_.userAccountModel().connectedID()},
        {"query", detailedLog.initialQuery.value_or("")},
        {"responseTimeMs",
         detailedLog.responseTimeMs ? std::to_string(*detailedLog.responseTimeMs) : std::string()},
        {"language", language()},
        {"info1", detailedLog.info1},
        {"info2", detailedLog.info2.value_or("")},
        {"subject", subject.subject},
        {"topic", subject.topic},
        {"subtopic", subject.subtopic},
    };
    if (detailedLog.cached.value)
        parameters["cached"] = "true";
    if (detailedLog.offline.value)
        parameters["offline"] = "true";
    post("/detailedLog", parameters, *sessionManagerWithAnyToken_)
        .responseString([this, lifetime = lifetime_.watch()](const DataResponse<std::string>& response) {
            if (!lifetime.isOver() && response.response && response.result)
                logResponse(*response.response, std::string_view(response.result.value()));
        })
        .detach();
}

void Networking::sendSolutionResponseTiming(const std::string& rawQuery, Date startTime, bool isSuccess,
                                            const std::optional<StepsMetadataParse>& metadata) {
    const auto elapsed = application_.platform().clock->now() - startTime;
    const StepsMetadataParse told = metadata.value_or(StepsMetadataParse{});
    HttpParameters parameters{
        {"type", "SolutionResponseTiming"},
        {"connected", application_.userAccountModel().connectedID()},
        {"query", rawQuery},
        {"responseTimeMs", std::to_string(elapsed.count())},
        {"success", isSuccess ? "true" : "false"},
        {"language", language()},
        {"subject", told.subject.value_or("")},
        {"topic", told.topic.value_or("")},
        {"subtopic", told.subtopic.value_or("")},
    };
    if (told.cached)
        parameters["cached"] = "true";
    post("/solutionResponseTiming", parameters, *sessionManagerWithAnyToken_)
        .response([](const DataResponse<void>&) {})
        .detach();
}

void Networking::logCachedSteps(const std::string& query, const std::optional<std::string>& topic,
                                Offline offline, UniqueFunction<void(bool)> completion) {
    HttpParameters parameters{
        {"connected", application_.userAccountModel().connectedID()},
        {"language", language()},
        {"query", query},
    };
    if (topic)
        parameters["topic"] = *topic;
    if (offline.value)
        parameters["offline"] = "true";
    post("/logCachedStepsMobile", parameters, *sessionManagerWithoutToken_)
        .response([this, lifetime = lifetime_.watch(),
                   completion = std::move(completion)](const DataResponse<void>& response) mutable {
            const bool isAccepted = !lifetime.isOver() && response.response &&
                                    validateResponse(*response.response, response.request);
            completion(isAccepted && response.result);
        })
        .detach();
}

void Networking::logCameraEvent(const std::string& cameraSessionID, const std::string& action,
                                const std::optional<std::string>& extraInfo,
                                std::optional<std::chrono::milliseconds> elapsedTime,
                                LogEverywhere logEverywhere) {
    const HttpParameters event{
        {"id", cameraSessionID},
        {"action", action},
        {"extraInfo", extraInfo.value_or("")},
        {"elapsedTimeMs", elapsedTime ? std::to_string(elapsedTime->count()) : std::string()},
        {"connected", application_.userAccountModel().connectedID()},
        {"language", language()},
    };
    logCameraEvent(fullOCRHostName(), event);
    if (logEverywhere.value)
        logCameraEvent(fullHostName(), event);
}

void Networking::logCameraEvent(const std::string& toHost, const HttpParameters& event) {
    makeRequest(toHost + "/logCameraEvent", HttpMethod::post, event, *sessionManagerWithAnyToken_)
        .response([](const DataResponse<void>&) {})
        .detach();
}

} // namespace teralune
