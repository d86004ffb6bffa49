#include "Classes/Networking/Networking.h"

#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Interfaces/IApplication.h"
#include "Platform/Http/HttpError.h"

namespace teralune {

void Networking::taskDidComplete(const SessionTask& task, const std::optional<Error>& error) {
    if (task.response)
        capturePlaySession(*task.response);
    if (error)
        report(*error, task.originalRequest.url, task.response ? task.response->statusCode : 0);
}

void Networking::report(const Error& error, const std::string& url, int responseCode) const {
    // The line speaks of both causes; this transport tells them apart by their codes.
    if (error.code == static_cast<std::int64_t>(HttpTransportError::cancelled) ||
        error.code == static_cast<std::int64_t>(HttpTransportError::serverCertificateUntrusted))
        log("Request failed with -999 CANCELED. May also indicate a server certificate validation failure.");
    application_.crashReporter().recordError(
        error, {{"url", url}, {"responseCode", static_cast<std::int64_t>(responseCode)}});
    print("Error: " + error.localizedDescription);
}

CachedURLResponse Networking::dataTaskWillCacheResponse(CachedURLResponse proposed) const {
    logResponse(proposed.response, std::string_view(*proposed.data));
    return proposed;
}

void Networking::logResponse(const HTTPURLResponse& response, const ResponseObject& responseObject) const {
    log("Server response %ld from %@: %@",
        {std::int64_t{response.statusCode}, response.url, responseBodySummary(responseObject)});
}

} // namespace teralune
