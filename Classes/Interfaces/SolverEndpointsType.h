#pragma once

#include "Classes/Interfaces/SolutionOrigin.h"
#include "Classes/Networking/OCRResponse.h"
#include "Classes/Networking/StepsMetadataParse.h"
#include "Classes/Networking/Suggestion.h"
#include "Platform/Foundation/UniqueFunction.h"
#include "Platform/Tasks/Task.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace teralune {

/// Whether the server counts a request as the user's own.
struct ShouldLog {
    bool value = false;
};

/// Whether only the solution is wanted, without its steps.
struct RequestOnlySolution {
    bool value = false;
};

/// How a steps request ended. A server that knows no solution answers "null": then success is false and
/// isNull true.
struct SolutionStepsReply {
    bool success = false;
    bool isNull = false;
    std::optional<std::string> body; ///< the steps as JSON text; present exactly on success
    /// What the body says of itself; absent also when it is no JSON object.
    std::optional<StepsMetadataParse> metadata;
};

/// How a verification ended.
struct VerifyReply {
    bool success = false;
    std::optional<std::string> body; ///< JSON text; present exactly on success
};

/// How a plotting request ended.
struct PlotInfoReply {
    bool success = false;
    bool flag = false;               ///< false; kept for hosts that read it
    std::optional<std::string> body; ///< JSON text; present exactly on success
};

/// How a recognition ended.
struct OCRReply {
    /// The server recognised a problem and sent it.
    bool success = false;
    /// The request itself failed, so that trying again may help; response is absent then.
    bool networkFailure = false;
    /// The server's whole answer, where one could be read.
    std::optional<OCRResponse> response;
    /// A text to show: the server's message where its count asks for one, or the localized failure text.
    std::optional<std::string> userMessage;
};

/// A photographed or drawn problem: the bytes of an encoded image, or the file that holds them.
using OCRImage = std::variant<std::string, std::filesystem::path>;

/// The solver's operations. Each may be called from any thread; completions run exactly once, on the main
/// queue. They work signed in or not.
class SolverEndpointsType {
public:
    virtual ~SolverEndpointsType() = default;

    virtual void getSolutionSteps(const std::string& query, ShouldLog shouldLog, SolutionOrigin origin,
                                  RequestOnlySolution requestOnlySolution,
                                  UniqueFunction<void(SolutionStepsReply)> completion) = 0;

    /// What a steps text says of its subject; no value when it is no JSON object.
    virtual std::optional<StepsMetadataParse> parseJsonSteps(std::string_view json) const = 0;

    /// Asks whether the solution solves the problem.
    virtual void verify(const std::string& problem, const std::string& solution,
                        SolutionOrigin solutionOrigin, UniqueFunction<void(VerifyReply)> completion) = 0;

    /// What is needed to plot a graph, which is given as its definition.
    virtual void getPlotInfo(const std::string& graphingObject, ShouldLog shouldLog,
                             UniqueFunction<void(PlotInfoReply)> completion) = 0;

    /// Sends an image to be recognised. incrementalCount numbers the images of one camera session.
    virtual void sendOCRRequest(OCRImage imageData, const std::string& cameraSessionID, int incrementalCount,
                                UniqueFunction<void(OCRReply)> completion) = 0;

    /// Suggestions for what has been typed so far; absent when the request failed or the reply was
    /// anything but a list of objects.
    virtual void
    querySuggestions(const std::string& query,
                     UniqueFunction<void(std::optional<std::vector<Suggestion>>)> completion) = 0;

    /// The bytes of the image at the URL, as wide as given, in Base64. The request carries the identity
    /// cookies as every other does, so the URL must be one of the service's.
    virtual Task<std::string> requestImage(const std::string& url, int pixelWidth) = 0;
};

} // namespace teralune
