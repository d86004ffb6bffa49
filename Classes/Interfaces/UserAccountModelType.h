#pragma once

#include "Platform/Tasks/Task.h"

#include <boost/json/value.hpp>

#include <optional>
#include <string>

namespace teralune {

/// The signed-in session. Its state lives in the settings, so it may be read from any thread; operations are
/// called on the main thread.
class UserAccountModelType {
public:
    virtual ~UserAccountModelType() = default;

    /// Empty when nobody is signed in.
    virtual std::string connectedID() const = 0;
    virtual bool isLoggedIn() const = 0;

    /// Takes in the reply of a sign-in or sign-up: signs in when it holds an id and a token, does nothing
    /// otherwise.
    virtual void consume(const std::optional<boost::json::value>& loginOrSignupResponseObject) = 0;
    /// Fetches the profile of the signed-in user and keeps it.
    virtual void refreshUserInfo() = 0;
    /// Saves both names on the server, one after the other, and each in the settings once the server has it.
    virtual Task<void> updateAccountInfo(const std::string& firstName, const std::string& lastName) = 0;
    /// Signs out here and on the server.
    virtual void logOut() = 0;
    /// Signs out here, because the server has rejected the session, and tells the host.
    virtual void logoutUserAndPromptForLogin() = 0;
};

} // namespace teralune
