#include "Classes/Networking/Networking.h"

#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/ITeraluneConstants.h"
#include "Classes/Networking/ReplyReading.h"
#include "Classes/Support/Localization.h"
#include "Platform/Foundation/Base64.h"
#include "Platform/Foundation/Printer.h"
#include "Platform/Http/MultipartFormData.h"

#include <algorithm>

namespace teralune {
namespace {

/// What the server takes the place of a user for; it keeps no record of "nolog".
std::string userId(ShouldLog shouldLog) {
    return shouldLog.value ? "fe" : "nolog";
}

std::optional<OCRResponse> mapOCRResponse(const boost::json::object& json) {
    return OCRResponse::map(json);
}

OCRReply reply(OCRResponse response) {
    OCRReply reply;
    reply.success = response.success && response.latex;
    if (response.userMessageCount > 0)
        reply.userMessage = response.userMessage;
    reply.response = std::move(response);
    return reply;
}

/// What a steps text tells. On the delegate queue, since the text may be long.
SolutionStepsReply stepsReply(std::string body) {
    if (body == "null")
        return {.success = false, .isNull = true, .body = {}, .metadata = {}};
    auto metadata = StepsMetadataParse::parse(body);
    return {.success = true, .isNull = false, .body = std::move(body), .metadata = std::move(metadata)};
}

/// No value for anything but an array of objects.
std::optional<std::vector<Suggestion>> suggestions(const boost::json::value& json) {
    const boost::json::array* array = json.if_array();
    if (!array || !std::all_of(array->begin(), array->end(),
                               [](const boost::json::value& element) { return element.is_object(); }))
        return std::nullopt;
    std::vector<Suggestion> list;
    for (const boost::json::value& element : *array)
        if (auto suggestion = Suggestion::map(element.get_object()))
            list.push_back(*std::move(suggestion));
    return list;
}

} // namespace

void Networking::getSolutionSteps(const std::string& query, ShouldLog shouldLog, SolutionOrigin origin,
                                  RequestOnlySolution requestOnlySolution,
                                  UniqueFunction<void(SolutionStepsReply)> completion) {
    std::string url = fullHostName() + "/pub_api/steps?query=" + urlEncode(query) +
                      "&language=" + language() + "&userId=" + userId(shouldLog) +
                      "&origin=" + std::string(word(origin));
    if (requestOnlySolution.value)
        url += "&solutionRequest=SolutionOnly";
    const Date startTime = application_.platform().clock->now();
    makeRequest(url, HttpMethod::get, {}, *sessionManagerWithAnyToken_)
        .responseString<SolutionStepsReply>(
            stepsReply,
            [this, lifetime = lifetime_.watch(), query, startTime,
             completion = std::move(completion)](DataResponse<SolutionStepsReply> response) mutable {
                SolutionStepsReply reply =
                    response.result ? std::move(response.result).value() : SolutionStepsReply{};
                // First, so that the time is the server's and not the screen's.
                if (!lifetime.isOver())
                    sendSolutionResponseTiming(query, startTime, reply.success, reply.metadata);
                completion(std::move(reply));
            })
        .detach();
}

std::optional<StepsMetadataParse> Networking::parseJsonSteps(std::string_view json) const {
    return StepsMetadataParse::parse(json);
}

void Networking::verify(const std::string& problem, const std::string& solution,
                        SolutionOrigin solutionOrigin, UniqueFunction<void(VerifyReply)> completion) {
    const std::string url = fullHostName() + "/api/verifySolution?problem=" + urlEncode(problem) +
                            "&solution=" + urlEncode(solution) + "&language=" + language() +
                            "&origin=" + std::string(word(solutionOrigin));
    makeRequest(url, HttpMethod::get, {}, *sessionManagerWithAnyToken_)
        .responseString([&application = application_,
                         completion = std::move(completion)](DataResponse<std::string> response) mutable {
            if (response.result && isAnswer(response.result.value())) {
                completion({true, std::move(response.result).value()});
                return;
            }
            application.crashReporter().TRL_CLSNSLogv("Null response from verify solution.");
            completion({});
        })
        .detach();
}

void Networking::getPlotInfo(const std::string& graphingObject, ShouldLog shouldLog,
                             UniqueFunction<void(PlotInfoReply)> completion) {
    post("/pub_api/graph/plottingInfo?origin=mobile&userId=" + userId(shouldLog),
         {{"userGraph", graphingObject}}, *sessionManagerWithAnyToken_)
        .responseString([&application = application_,
                         completion = std::move(completion)](DataResponse<std::string> response) mutable {
            if (response.result && isAnswer(response.result.value())) {
                completion({true, false, std::move(response.result).value()});
                return;
            }
            application.crashReporter().TRL_CLSNSLogv("Null response from plottingInfo.");
            completion({});
        })
        .detach();
}

void Networking::sendOCRRequest(OCRImage imageData, const std::string& cameraSessionID, int incrementalCount,
                                UniqueFunction<void(OCRReply)> completion) {
    const std::string url = fullOCRHostName() +
                            "/api/getLatex?mode=" + (constants_.debugMode() ? "debug" : "") +
                            "&sessionid=" + urlEncode(cameraSessionID) + "&language=" + language();
    auto form = std::make_shared<MultipartFormData>();
    form->append({"image", formatString("%04d.jpg", {std::int64_t{incrementalCount}}), "image/jpeg",
                  std::move(imageData)});
    log("Request to: %@", {url});
    sessionManagerWithAnyToken_->upload(std::move(form), url)
        .validate()
        .responseObject<OCRResponse>(
            mapOCRResponse,
            [&application = application_,
             completion = std::move(completion)](DataResponse<OCRResponse> response) mutable {
                if (!response.result) {
                    completion({false, true, std::nullopt,
                                Localize(application.platform(), "OCR_NETWORK_SERVER_FAILURE")});
                    return;
                }
                OCRResponse& recognised = response.result.value();
                if (recognised.latex)
                    application.crashReporter().TRL_CLSNSLogv("Successfully parsed latex: %@",
                                                              {*recognised.latex});
                completion(reply(std::move(recognised)));
            })
        .detach();
}

void Networking::querySuggestions(const std::string& query,
                                  UniqueFunction<void(std::optional<std::vector<Suggestion>>)> completion) {
    const std::string url =
        fullHostName() + "/suggest?userId=mobile&language=" + language() + "&query=" + urlEncode(query);
    makeRequest(url, HttpMethod::get, {}, *sessionManagerWithAnyToken_)
        .responseJSON([&application = application_, completion = std::move(completion)](
                          const DataResponse<boost::json::value>& response) mutable {
            const bool isRead = response.result.succeeded();
            auto list = isRead ? suggestions(response.result.value()) : std::nullopt;
            if (!list && (isRead || isUnreadableReply(response.result.error())))
                application.platform().printer->print("didn't get suggestion objects as JSON from API");
            completion(std::move(list));
        })
        .detach();
}

Task<std::string> Networking::requestImage(const std::string& url, int pixelWidth) {
    const TaskCompletionSource<std::string> source;
    makeRequest(url + "&width=" + std::to_string(pixelWidth), HttpMethod::get, {},
                *sessionManagerWithAnyToken_)
        .responseData([source](const DataResponse<std::string>& response) {
            if (response.result)
                source.complete(base64Encoded(response.result.value()));
            else
                source.complete(response.result.error());
        })
        .detach();
    return source.task();
}

} // namespace teralune
