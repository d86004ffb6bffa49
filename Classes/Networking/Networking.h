#pragma once

#include "Classes/Interfaces/NetworkingType.h"
#include "Classes/Networking/ResponseBodySummary.h"
#include "Platform/Foundation/Lifetime.h"
#include "Platform/Foundation/StringFormat.h"
#include "Platform/Http/DataRequest.h"
#include "Platform/Http/RequestAdapter.h"
#include "Platform/Http/RequestRetrier.h"
#include "Platform/Http/SessionManager.h"

#include <chrono>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace teralune {

class IApplication;
struct RefreshResponse;
class ITeraluneConstants;

/// The one client of the solver service's HTTP API. Made by the host and handed out as
/// application.networking(); made and destroyed on the main thread.
///
/// Operations may be called from any thread; their completions run exactly once, on the main queue. Identity
/// travels in the Cookie header, which the adapter writes for every attempt; a 403 makes the client fetch one
/// new token, while every other refused request waits, and then retries them all. The destructor ends what is
/// under way: each completion is told a failure.
///
/// What is sent and received is logged. Passwords, authorization codes and identity providers' profiles are
/// masked; the one token that reaches the log is the one in the line about a new access token.
class Networking final : public NetworkingType, public RequestAdapter, public RequestRetrier {
public:
    static constexpr std::string_view NetworkingDomain = "TeraluneNetworking";
    static constexpr std::string_view PlaySessionKey = "PLAY_SESSION";
    static constexpr std::string_view tokenCookie = "tq.token";

    /// Both outlive the client.
    Networking(IApplication& application, const ITeraluneConstants& constants);
    ~Networking() override;

    // ---- Hosts, computed on every read

    std::string fullHostName() const;
    std::string fullOCRHostName() const;

    // ---- The request pipeline

    SessionManager& sessionManagerWithPrivateToken() { return *sessionManagerWithPrivateToken_; }
    SessionManager& sessionManagerWithAnyToken() { return *sessionManagerWithAnyToken_; }
    SessionManager& sessionManagerWithoutToken() { return *sessionManagerWithoutToken_; }

    /// A request with default validation attached, logged with its parameters (secret ones masked).
    DataRequest makeRequest(const std::string& url, HttpMethod method, const HttpParameters& parameters,
                            SessionManager& manager);

    /// Writes the Cookie header, whatever the request's host is, without a session cookie or token that no
    /// header can hold. A sign-out that brings its token keeps that. Delegate queue.
    Result<URLRequest> adapt(URLRequest request) override;
    /// Refreshes the token after a 403 and retries what it was refused for; nothing else is retried.
    void should(SessionManager& manager, const SessionTask& request, const Error& error,
                RetryCompletion completion) override;

    /// Appends a Cookie value to those the request has.
    void addCookieTo(URLRequest& request, std::string_view key, std::string_view value) const;
    /// Deletes from the shared cookie storage what it holds for the request's URL.
    void removeURLCookiesFrom(const URLRequest& request) const;
    /// Captures PLAY_SESSION unless no header can hold it; records an error and returns false for a status
    /// that is not 200 to 299.
    bool validateResponse(const HTTPURLResponse& response, const URLRequest& request);

    /// name=value, each run of blanks, commas, semicolons and "=" in the value replaced by one "_".
    static std::string cookie(std::string_view name, std::string_view value);

    /// Percent-encodes all that a URL fragment may not hold, and "'"; no value for text that is not UTF-8.
    static std::optional<std::string> encodeString(std::string_view text);
    /// Percent-encodes all that a URL query may not hold, and ' & / = +; no value for text that is not UTF-8.
    static std::optional<std::string> encodeStringForQuery(std::string_view text);
    std::string urlEncode(std::string_view text) const override;
    std::optional<std::string> staticLocalURL(std::string_view page) const override;

    Lifetime::Watch lifetime() const override { return lifetime_.watch(); }

    // ---- Endpoints, by family; contracts in the families' types

    void getUserData(UniqueFunction<void(std::optional<UserData>)> completion) override;
    Task<void> deleteAccount() override;
    Task<void> updateEmail(const std::string& email, const std::string& password1,
                           const std::optional<std::string>& password2) override;
    Task<void> updateUserField(UserField field, const std::string& value) override;
    Task<void> changePassword(const std::string& currentPassword, const std::string& newPassword,
                              const std::string& confirmPassword) override;
    void logOut() override;
    void dismissNotification(const std::string& notificationKey) override;
    Task<void> resetPasswordWith(const std::string& email) override;
    void microsoftAuthWith(const std::string& authCode, const std::string& codeVerifier,
                           const std::string& redirectUrl,
                           UniqueFunction<void(SignInReply)> completion) override;
    void facebookAuthWith(const boost::json::object& object,
                          UniqueFunction<void(SignInReply)> completion) override;
    void signupWith(const std::string& email, const std::string& firstName, const std::string& lastName,
                    const std::string& password, UniqueFunction<void(SignInReply)> completion) override;
    void logInWith(const std::string& email, const std::string& password,
                   UniqueFunction<void(SignInReply)> completion) override;

    void hasWebNotes(UniqueFunction<void(bool)> completion) override;
    void getNotebookEntries(UniqueFunction<void(NotebookEntriesReply)> completion) override;
    void loadPreviewNotes(const std::string& listID,
                          UniqueFunction<void(PreviewNotesReply)> completion) override;
    void savePreviewNotes(const std::string& listID,
                          UniqueFunction<void(SavePreviewNotesReply)> completion) override;
    void saveNote(const std::string& query, const std::string& topic, const std::string& savedFrom,
                  UniqueFunction<void(bool)> completion) override;
    void saveGraph(const std::optional<std::string>& graphId, const std::string& graphJson,
                   UniqueFunction<void(SaveGraphReply)> completion) override;
    void removeNote(const std::string& query, UniqueFunction<void(bool)> completion) override;
    void removeNotes(const std::vector<std::string>& queries, UniqueFunction<void(bool)> completion) override;
    void updateNote(Favorite favorite, const std::string& problem,
                    UniqueFunction<void(bool)> completion) override;
    void updateNote(const Notes& notes, const std::string& problem,
                    UniqueFunction<void(bool)> completion) override;
    Task<void> updateNote(const TagChange& change, const std::string& problem) override;
    Task<void> clearNotebook() override;

    void getSolutionSteps(const std::string& query, ShouldLog shouldLog, SolutionOrigin origin,
                          RequestOnlySolution requestOnlySolution,
                          UniqueFunction<void(SolutionStepsReply)> completion) override;
    std::optional<StepsMetadataParse> parseJsonSteps(std::string_view json) const override;
    void verify(const std::string& problem, const std::string& solution, SolutionOrigin solutionOrigin,
                UniqueFunction<void(VerifyReply)> completion) override;
    void getPlotInfo(const std::string& graphingObject, ShouldLog shouldLog,
                     UniqueFunction<void(PlotInfoReply)> completion) override;
    void sendOCRRequest(OCRImage imageData, const std::string& cameraSessionID, int incrementalCount,
                        UniqueFunction<void(OCRReply)> completion) override;
    void querySuggestions(const std::string& query,
                          UniqueFunction<void(std::optional<std::vector<Suggestion>>)> completion) override;
    Task<std::string> requestImage(const std::string& url, int pixelWidth) override;

    void sendDetailedLog(const DetailedLog& log) override;
    void sendDetailedLogExtraFields(const DetailedLog& log, const SolutionSubject& subject) override;
    void logCachedSteps(const std::string& query, const std::optional<std::string>& topic, Offline offline,
                        UniqueFunction<void(bool)> completion) override;
    void logCameraEvent(const std::string& cameraSessionID, const std::string& action,
                        const std::optional<std::string>& extraInfo,
                        std::optional<std::chrono::milliseconds> elapsedTime,
                        LogEverywhere logEverywhere) override;
    /// Records how long a steps request took, and what its reply said of itself.
    void sendSolutionResponseTiming(const std::string& rawQuery, Date startTime, bool isSuccess,
                                    const std::optional<StepsMetadataParse>& metadata);

private:
    /// Whether a request is the sign-out, which carries the token that was in force before it.
    struct IsLogout {
        bool value = false;
    };

    std::string language() const;
    void print(std::string_view line) const;
    void log(std::string_view format, std::initializer_list<FormatArgument> arguments = {}) const;
    DataRequest post(std::string_view path, const HttpParameters& parameters, SessionManager& manager);

    static bool isLogoutURL(std::string_view url) { return url.find("/logout") != std::string_view::npos; }
    std::string getCookieString(IsLogout isLogout) const;
    /// The cookies without the token.
    std::string identityCookies() const;
    std::string standardCookies() const;
    void capturePlaySession(const HTTPURLResponse& response);

    void taskDidComplete(const SessionTask& task, const std::optional<Error>& error);
    void report(const Error& error, const std::string& url, int responseCode) const;
    CachedURLResponse dataTaskWillCacheResponse(CachedURLResponse proposed) const;
    void logResponse(const HTTPURLResponse& response, const ResponseObject& responseObject) const;

    /// Whom an answer about a token is for: user and token at the time of the question.
    using UserSession = std::pair<std::string, std::optional<std::string>>;
    UserSession currentSession() const;
    void refreshToken(UniqueFunction<void(bool)> completion);
    bool consumeRefresh(const DataResponse<RefreshResponse>& response);
    void releaseHeldRequests(RetryDecision decision, RetryCompletion first);

    Task<void> postForAlert(std::string_view path, const HttpParameters& parameters, SessionManager& manager);
    void signIn(DataRequest request, UniqueFunction<void(SignInReply)> completion);
    void changeNotes(std::string_view path, const HttpParameters& parameters,
                     UniqueFunction<void(bool)> completion);
    Task<void> changeNotes(std::string_view path, const HttpParameters& parameters);
    void logCameraEvent(const std::string& toHost, const HttpParameters& event);

    IApplication& application_;
    const ITeraluneConstants& constants_;

    mutable std::mutex playSessionMutex_; ///< replies set the value while requests are being written
    std::optional<std::string> playSession_;

    std::mutex lock_; ///< guards the two below
    bool isRefreshing_ = false;
    std::vector<RetryCompletion> requestsToRetry_;

    std::unique_ptr<SessionManager> sessionManagerWithPrivateToken_;
    std::unique_ptr<SessionManager> sessionManagerWithAnyToken_;
    std::unique_ptr<SessionManager> sessionManagerWithoutToken_;

    Lifetime lifetime_;
};

} // namespace teralune
