#include "Classes/Networking/Networking.h"

#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/SettingsPersistenceType.h"
#include "Classes/Networking/CookieValue.h"
#include "Classes/Networking/MobileResponse.h"
#include "Classes/Networking/ReplyReading.h"
#include "Classes/Networking/RequestResponse.h"
#include "Classes/Networking/TeraluneNetworkingError.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Foundation/Printer.h"
#include "Platform/Foundation/Utf8.h"

#include <algorithm>
#include <cmath>

namespace teralune {
namespace {

/// The object that the server answered, or what the task fails with.
Result<boost::json::object> objectOf(const IApplication& application,
                                     const DataResponse<boost::json::value>& response) {
    if (response.result && response.result.value().is_object())
        return response.result.value().get_object();
    if (!response.result && !isUnreadableReply(response.result.error()))
        return response.result.error();
    application.platform().printer->print("didn't get response object as JSON from API");
    return TeraluneNetworkingError::jsonContentFailure();
}

/// The members of an object that holds nothing but texts.
SignInReply texts(const DataResponse<boost::json::value>& response) {
    const boost::json::object* object = response.result ? response.result.value().if_object() : nullptr;
    if (!object)
        return std::nullopt;
    std::map<std::string, std::string> texts;
    for (const auto& [key, value] : *object) {
        if (!value.is_string())
            return std::nullopt;
        texts.emplace(key, value.get_string());
    }
    return texts;
}

/// JSON has no word for infinity and for what is not a number.
bool canBeWritten(const boost::json::value& value) {
    if (value.is_double())
        return std::isfinite(value.get_double());
    if (value.is_array())
        return std::all_of(value.get_array().begin(), value.get_array().end(), canBeWritten);
    if (value.is_object())
        return std::all_of(value.get_object().begin(), value.get_object().end(),
                           [](const auto& member) { return canBeWritten(member.value()); });
    return true;
}

} // namespace

void Networking::getUserData(UniqueFunction<void(std::optional<UserData>)> completion) {
    post("/api/user/info", {}, *sessionManagerWithPrivateToken_)
        .responseJSON([&application = application_, completion = std::move(completion)](
                          const DataResponse<boost::json::value>& response) mutable {
            if (response.result && response.result.value().is_object()) {
                completion(UserData::map(response.result.value().get_object()));
                return;
            }
            application.platform().printer->print("didn't get user object as JSON from API");
            completion(std::nullopt);
        })
        .detach();
}

Task<void> Networking::deleteAccount() {
    const TaskCompletionSource<void> source;
    post("/api/user/disableAccount", {}, *sessionManagerWithPrivateToken_)
        .response([source](const DataResponse<void>& response) { source.complete(response.result); })
        .detach();
    return source.task();
}

Task<void> Networking::updateEmail(const std::string& email, const std::string& password1,
                                   const std::optional<std::string>& password2) {
    HttpParameters parameters{{"newEmail", email}, {"password", password1}};
    if (password2)
        parameters["password2"] = *password2;
    return postForAlert("/api/user/updateEmail", parameters, *sessionManagerWithPrivateToken_);
}

Task<void> Networking::changePassword(const std::string& currentPassword, const std::string& newPassword,
                                      const std::string& confirmPassword) {
    return postForAlert("/api/user/changePassword",
                        {{"currentPassword", currentPassword},
                         {"password", newPassword},
                         {"password2", confirmPassword},
                         {"force", "false"}},
                        *sessionManagerWithPrivateToken_);
}

Task<void> Networking::resetPasswordWith(const std::string& email) {
    return postForAlert("/resetRequest", {{"lang", language()}, {"email", email}},
                        *sessionManagerWithoutToken_);
}

Task<void> Networking::postForAlert(std::string_view path, const HttpParameters& parameters,
                                    SessionManager& manager) {
    const TaskCompletionSource<void> source;
    post(path, parameters, manager)
        .responseJSON(
            [&application = application_, source](const DataResponse<boost::json::value>& response) {
                const auto object = objectOf(application, response);
                if (!object)
                    source.complete(object.error());
                else if (const auto answer = MobileResponse::map(object.value()); answer.alert)
                    source.complete(TeraluneNetworkingError::failureWithMessage(*answer.alert));
                else
                    source.complete({});
            })
        .detach();
    return source.task();
}

Task<void> Networking::updateUserField(UserField field, const std::string& value) {
    const TaskCompletionSource<void> source;
    post("/api/user/updateUserField", {{"field", std::string(description(field))}, {"value", value}},
         *sessionManagerWithPrivateToken_)
        .responseJSON(
            [&application = application_, source](const DataResponse<boost::json::value>& response) {
                const auto object = objectOf(application, response);
                if (!object)
                    source.complete(object.error());
                else if (!RequestResponse::map(object.value()).success)
                    source.complete(TeraluneNetworkingError::internalRequestFailure());
                else
                    source.complete({});
            })
        .detach();
    return source.task();
}

void Networking::logOut() {
    // The token travels with the request: when that is sent the settings may have forgotten it, or have that
    // of somebody who signed out since.
    const auto token = application_.persistence().logoutAccessToken();
    DataRequest request = makeRequest(fullHostName() + "/logout?isMobile=true", HttpMethod::get, {},
                                      *sessionManagerWithPrivateToken_);
    if (token && canBeCookieValue(*token))
        request = std::move(request).header("Cookie", cookie(tokenCookie, *token));
    std::move(request).responseData([](const DataResponse<std::string>&) {}).detach();
}

void Networking::dismissNotification(const std::string& notificationKey) {
    post("/api/user/dismissNotification", {{"notificationKey", notificationKey}},
         *sessionManagerWithPrivateToken_)
        .responseString([](const DataResponse<std::string>&) {})
        .detach();
}

void Networking::logInWith(const std::string& email, const std::string& password,
                           UniqueFunction<void(SignInReply)> completion) {
    signIn(post("/mobileLogin", {{"lang", language()}, {"email", email}, {"password", password}},
                *sessionManagerWithoutToken_),
           std::move(completion));
}

void Networking::signupWith(const std::string& email, const std::string& firstName,
                            const std::string& lastName, const std::string& password,
                            UniqueFunction<void(SignInReply)> completion) {
    signIn(post("/mobileSignup",
                {{"lang", language()},
                 {"email", email},
                 {"firstName", firstName},
                 {"lastName", lastName},
                 {"password", password}},
                *sessionManagerWithoutToken_),
           std::move(completion));
}

void Networking::facebookAuthWith(const boost::json::object& object,
                                  UniqueFunction<void(SignInReply)> completion) {
    const bool isJson = canBeWritten(object);
    const std::string text = isJson ? serializeJson(object) : std::string();
    if (!isJson || !isValidUtf8(text)) {
        log(isJson ? "Could not make string from json data"
                   : "Could not serialize facebook response to json");
        application_.platform().mainQueue->async(
            [completion = std::move(completion)]() mutable { completion(std::nullopt); });
        return;
    }
    signIn(post("/mobileFacebookAuth", {{"facebookObj", text}, {"lang", language()}},
                *sessionManagerWithoutToken_),
           std::move(completion));
}

void Networking::microsoftAuthWith(const std::string& authCode, const std::string& codeVerifier,
                                   const std::string& redirectUrl,
                                   UniqueFunction<void(SignInReply)> completion) {
    signIn(post("/microsoftMobileAuth2?lang=" + language(),
                {{"code", authCode}, {"code_verifier", codeVerifier}, {"redirectUrl", redirectUrl}},
                *sessionManagerWithoutToken_),
           std::move(completion));
}

void Networking::signIn(DataRequest request, UniqueFunction<void(SignInReply)> completion) {
    std::move(request)
        .responseJSON(
            [completion = std::move(completion)](const DataResponse<boost::json::value>& response) mutable {
                completion(texts(response));
            })
        .detach();
}

} // namespace teralune
