#pragma once

#include "Classes/Interfaces/SettingsPersistenceType.h"
#include "Classes/Interfaces/UserAccountModelType.h"

namespace teralune {

/// An account whose state is the settings' and whose operations do no more than they must.
class FakeUserAccountModel final : public UserAccountModelType {
public:
    explicit FakeUserAccountModel(SettingsPersistenceType& persistence) : persistence_(persistence) {}

    /// Signs in, without any request.
    void signIn(const std::string& connectedID, const std::string& accessToken) {
        persistence_.setAccessToken(accessToken);
        persistence_.setConnectedID(connectedID);
    }

    int prompts = 0; ///< calls of logoutUserAndPromptForLogin

    std::string connectedID() const override { return persistence_.connectedID().value_or(""); }
    bool isLoggedIn() const override { return !connectedID().empty(); }
    void consume(const std::optional<boost::json::value>&) override {}
    void refreshUserInfo() override {}
    Task<void> updateAccountInfo(const std::string&, const std::string&) override {
        return Task<void>::forResult({});
    }
    void logOut() override { persistence_.logout(); }
    void logoutUserAndPromptForLogin() override {
        ++prompts;
        persistence_.logout();
    }

private:
    SettingsPersistenceType& persistence_;
};

} // namespace teralune
