#pragma once

#include "Classes/Interfaces/SettingsPersistenceType.h"
#include "Classes/Interfaces/UserAccountModelType.h"

#include <vector>

namespace teralune {

/// An account whose state is the settings' and whose operations are only counted.
class FakeUserAccountModel final : public UserAccountModelType {
public:
    explicit FakeUserAccountModel(SettingsPersistenceType& persistence) : persistence_(persistence) {}

    /// Signs in, without any request.
    void signIn(const std::string& connectedID, const std::string& accessToken) {
        persistence_.setAccessToken(accessToken);
        persistence_.setConnectedID(connectedID);
    }

    std::vector<boost::json::value> consumed;
    int refreshes = 0;
    int logOuts = 0;
    int prompts = 0; ///< calls of logoutUserAndPromptForLogin

    std::string connectedID() const override { return persistence_.connectedID().value_or(""); }
    bool isLoggedIn() const override { return !connectedID().empty(); }
    void consume(const std::optional<boost::json::value>& loginOrSignupResponseObject) override {
        consumed.push_back(loginOrSignupResponseObject.value_or(nullptr));
    }
    void refreshUserInfo() override { ++refreshes; }
    Task<void> updateAccountInfo(const std::string& firstName, const std::string& lastName) override {
        persistence_.setFirstName(firstName);
        persistence_.setLastName(lastName);
        return Task<void>::forResult({});
    }
    void logOut() override {
        ++logOuts;
        persistence_.logout();
    }
    void logoutUserAndPromptForLogin() override {
        ++prompts;
        persistence_.logout();
    }

private:
    SettingsPersistenceType& persistence_;
};

} // namespace teralune
