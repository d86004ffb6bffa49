#include "Classes/Networking/Networking.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/SettingsPersistenceType.h"
#include "Classes/Interfaces/UserAccountModelType.h"
#include "Classes/Networking/CookieValue.h"
#include "Classes/Networking/RefreshResponse.h"

namespace teralune {
namespace {

constexpr int forbidden = 403;

std::optional<RefreshResponse> mapRefreshResponse(const boost::json::object& json) {
    return RefreshResponse::map(json);
}

} // namespace

void Networking::should(SessionManager& manager, const SessionTask& request, const Error& /*error*/,
                        RetryCompletion completion) {
    // An attempt that is sent again never comes to taskDidComplete.
    if (request.response)
        capturePlaySession(*request.response);
    // Whoever a sign-out is for is not signed in any more, even if somebody else is, whose token it must not
    // have refreshed again and again.
    const bool hasUser =
        application_.userAccountModel().isLoggedIn() && !isLogoutURL(request.originalRequest.url);
    if (&manager == sessionManagerWithPrivateToken_.get() && !hasUser) {
        log("Skipping endless loop: don't retry token request, user is not logged in.");
        completion(RetryDecision::doNotRetry, {});
        return;
    }
    if (!request.response || request.response->statusCode != forbidden) {
        log("Something went wrong with the request (not a 403)");
        log("Failed request: %@",
            {std::string(name(request.originalRequest.method)) + " " + request.originalRequest.url});
        completion(RetryDecision::doNotRetry, {});
        return;
    }
    {
        const std::lock_guard lock(lock_);
        if (isRefreshing_) {
            requestsToRetry_.push_back(std::move(completion));
            return;
        }
        isRefreshing_ = true;
    }
    // The flag alone keeps a second refresh away, so the refresh begins without the lock: it asks the host
    // for the sign-in state and for its log.
    try {
        refreshToken([this, lifetime = lifetime_.watch(),
                      completion = std::move(completion)](bool isRefreshed) mutable {
            if (lifetime.isOver())
                return;
            log("Refresh was successful: %@", {isRefreshed ? "true" : "false"});
            releaseHeldRequests(isRefreshed ? RetryDecision::retry : RetryDecision::doNotRetry,
                                std::move(completion));
        });
    } catch (...) {
        // A host may throw from what it is asked for. This request's completion went down with the refresh,
        // which is an answer; those that came meanwhile must not wait for ever, nor the next refresh.
        releaseHeldRequests(RetryDecision::doNotRetry, nullptr);
    }
}

void Networking::releaseHeldRequests(RetryDecision decision, RetryCompletion first) {
    // Under the lock, so that a request which fails meanwhile waits either for this refresh or for the next,
    // and is never left behind between the two. A retry completion only posts.
    const std::lock_guard lock(lock_);
    if (first)
        first(decision, {});
    for (RetryCompletion& completion : requestsToRetry_)
        completion(decision, {});
    requestsToRetry_.clear();
    isRefreshing_ = false;
}

void Networking::refreshToken(UniqueFunction<void(bool)> completion) {
    const bool isLoggedIn = application_.userAccountModel().isLoggedIn();
    const std::string url = fullHostName() + (isLoggedIn ? "/refresh" : "/api/mobile/token");
    log("Request to: %@", {url});

    SessionManager& manager = isLoggedIn ? *sessionManagerWithPrivateToken_ : *sessionManagerWithAnyToken_;
    // A refresh that is refused must fail rather than wait for itself, and must not queue behind the requests
    // that wait for it.
    manager.request(url, HttpMethod::post)
        .validate()
        .withoutRetrier()
        .inLane(TransferLane::control)
        .responseObject<RefreshResponse>(
            mapRefreshResponse,
            [this, lifetime = lifetime_.watch(), session = currentSession(),
             completion = std::move(completion)](const DataResponse<RefreshResponse>& response) mutable {
                // An answer to a user who has signed out meanwhile is none to whoever signed in since.
                if (!lifetime.isOver())
                    completion(session == currentSession() && consumeRefresh(response));
            })
        .detach();
}

Networking::UserSession Networking::currentSession() const {
    return {application_.userAccountModel().connectedID(), application_.persistence().accessToken()};
}

bool Networking::consumeRefresh(const DataResponse<RefreshResponse>& response) {
    if (!response.result) {
        // The server no longer knows the session.
        if (response.statusCode() == forbidden)
            application_.userAccountModel().logoutUserAndPromptForLogin();
        return false;
    }
    const RefreshResponse& answer = response.result.value();
    if (answer.alert) {
        log("Alert from refresh: %@", {*answer.alert});
        return false;
    }
    if (!answer.jwt || !canBeCookieValue(*answer.jwt))
        return false;
    log("Successfully received new access token: %@", {*answer.jwt});
    application_.persistence().setAccessToken(answer.jwt);
    return true;
}

} // namespace teralune
