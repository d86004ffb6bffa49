#pragma once

#include "Platform/Http/DataRequest.h"
#include "Platform/Http/ParameterEncoding.h"
#include "Platform/Http/SessionDelegate.h"

#include <memory>
#include <string_view>

namespace teralune {

struct PlatformServices;
class RequestAdapter;
class RequestRetrier;
class MultipartFormData;
class Session;

/// Makes and carries out requests that share a configuration, an adapter, a retrier and closures. For each
/// attempt: adapt, send, validate; after a failure the retrier decides; at the end taskDidComplete, then the
/// response handler on the main queue. All state of requests lives on the delegate queue of the platform
/// services.
///
/// request() may be called from any thread. The destructor cancels what is under way (each handler is told
/// -999) and returns when no adapter, retrier or closure is running any more; it must not be called from one
/// of them.
class SessionManager {
public:
    struct Configuration {
        /// Written to each request that does not have them.
        HttpHeaders httpAdditionalHeaders;
    };

    /// Accept-Encoding, Accept-Language (from the main bundle's preferred localizations) and User-Agent.
    static HttpHeaders defaultHTTPHeaders(const PlatformServices& platform);

    SessionManager(const PlatformServices& platform, Configuration configuration);
    ~SessionManager();
    SessionManager(const SessionManager&) = delete;
    SessionManager& operator=(const SessionManager&) = delete;

    /// Neither is owned; both outlive the manager or are taken out with nullptr, which waits until they are
    /// not running. Set before the first request.
    void setAdapter(RequestAdapter* adapter);
    void setRetrier(RequestRetrier* retrier);
    SessionDelegate& delegate();

    DataRequest request(std::string_view url, HttpMethod method, const HttpParameters& parameters = {});
    DataRequest upload(std::shared_ptr<const MultipartFormData> form, std::string_view url);

private:
    std::shared_ptr<Session> session_;
};

} // namespace teralune
