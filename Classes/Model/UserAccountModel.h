#pragma once

#include "Classes/Interfaces/UserAccountModelType.h"
#include "Platform/Foundation/Lifetime.h"

#include <string_view>

namespace teralune {

class IApplication;
struct UserData;

/// Owns the session of the signed-in user. Keeps no profile of its own: all state lives in the settings, so a
/// restart keeps the user signed in.
class UserAccountModel final : public UserAccountModelType {
public:
    /// Posted, without object or user info, each time the profile was rewritten from a server record.
    static constexpr std::string_view UserAccountInfoUpdated = "UserAccountInfoUpdatedNotification";

    static constexpr std::string_view CONNECTED_ID_RESPONSE_KEY = "connected";
    static constexpr std::string_view ACCESS_TOKEN_RESPONSE_KEY = "jwt";

    explicit UserAccountModel(IApplication& application) : application_(application) {}

    std::string connectedID() const override;
    bool isLoggedIn() const override;

    void consume(const std::optional<boost::json::value>& loginOrSignupResponseObject) override;
    void refreshUserInfo() override;
    Task<void> updateAccountInfo(const std::string& firstName, const std::string& lastName) override;
    void logOut() override;
    void logoutUserAndPromptForLogin() override;

private:
    void handleUserInfo(const UserData& user);
    void prepareLogout();

    IApplication& application_;
    Lifetime lifetime_;
};

} // namespace teralune
