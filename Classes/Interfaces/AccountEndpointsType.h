#pragma once

#include "Classes/Networking/UserData.h"
#include "Classes/Networking/UserField.h"
#include "Platform/Foundation/UniqueFunction.h"
#include "Platform/Tasks/Task.h"

#include <boost/json/object.hpp>

#include <map>
#include <optional>
#include <string>

namespace teralune {

/// What a sign-in endpoint answered: "connected" and "jwt", or a text under "alert". Absent after a failure
/// or when the reply held anything but texts.
using SignInReply = std::optional<std::map<std::string, std::string>>;

/// The account on the server. Each operation may be called from any thread; completions run exactly once, on
/// the main queue. A failed task carries a TeraluneNetworkingError as its error, or the transport's own.
class AccountEndpointsType {
public:
    virtual ~AccountEndpointsType() = default;

    virtual void getUserData(UniqueFunction<void(std::optional<UserData>)> completion) = 0;
    /// Succeeds with any reply whose status is 200 to 299, whatever stands in it; fails when the server
    /// refused or could not be reached.
    virtual Task<void> deleteAccount() = 0;
    /// password2 is sent only when present.
    virtual Task<void> updateEmail(const std::string& email, const std::string& password1,
                                   const std::optional<std::string>& password2) = 0;
    virtual Task<void> updateUserField(UserField field, const std::string& value) = 0;
    virtual Task<void> changePassword(const std::string& currentPassword, const std::string& newPassword,
                                      const std::string& confirmPassword) = 0;
    /// Tells the server, with the token that was in force before the local sign-out. Nothing is reported.
    virtual void logOut() = 0;
    virtual void dismissNotification(const std::string& notificationKey) = 0;
    virtual Task<void> resetPasswordWith(const std::string& email) = 0;

    virtual void microsoftAuthWith(const std::string& authCode, const std::string& codeVerifier,
                                   const std::string& redirectUrl,
                                   UniqueFunction<void(SignInReply)> completion) = 0;
    /// The profile as the identity provider gave it. A number in it that JSON can't hold (infinity, not a
    /// number) means that nothing is sent.
    virtual void facebookAuthWith(const boost::json::object& object,
                                  UniqueFunction<void(SignInReply)> completion) = 0;
    virtual void signupWith(const std::string& email, const std::string& firstName,
                            const std::string& lastName, const std::string& password,
                            UniqueFunction<void(SignInReply)> completion) = 0;
    virtual void logInWith(const std::string& email, const std::string& password,
                           UniqueFunction<void(SignInReply)> completion) = 0;
};

} // namespace teralune
