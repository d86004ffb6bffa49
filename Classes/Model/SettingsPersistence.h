#pragma once

#include "Classes/Interfaces/SettingsPersistenceType.h"

#include <memory>
#include <mutex>
#include <string_view>

namespace teralune {

class UserDefaults;

/// The settings over a store of user defaults. The keys and their encodings are fixed: stores of earlier
/// installations are read by them.
class SettingsPersistence final : public SettingsPersistenceType {
public:
    explicit SettingsPersistence(std::shared_ptr<UserDefaults> userDefaults);

    std::optional<std::string> userChosenLanguage() const override;
    void setUserChosenLanguage(const std::optional<std::string>& code) override;
    std::string installationID() const override;
    std::optional<std::string> connectedID() const override;
    void setConnectedID(const std::optional<std::string>& identifier) override;
    std::optional<std::string> accessToken() const override;
    void setAccessToken(const std::optional<std::string>& token) override;
    std::optional<std::string> firstName() const override;
    void setFirstName(const std::optional<std::string>& name) override;
    std::optional<std::string> lastName() const override;
    void setLastName(const std::optional<std::string>& name) override;
    std::optional<std::string> userEmail() const override;
    void setUserEmail(const std::optional<std::string>& email) override;
    std::optional<std::string> currentGraphJson() const override;
    void setCurrentGraphJson(const std::optional<std::string>& json) override;
    StepOption steps() const override;
    void setSteps(StepOption option) override;
    std::int64_t numDecimalDisplay() const override;
    void setNumDecimalDisplay(std::int64_t decimals) override;
    bool suggestionPreference() const override;
    void setSuggestionPreference(bool wanted) override;
    std::optional<Date> registrationDate() const override;
    void setRegistrationDate(const std::optional<Date>& date) override;
    bool userHasPassword() const override;
    void setUserHasPassword(bool hasPassword) override;
    LoginType loginType() const override;
    void setLoginType(LoginType type) override;
    std::optional<std::string> lastSelectedTopicIdentifier() const override;
    void setLastSelectedTopicIdentifier(const std::optional<std::string>& identifier) override;
    std::optional<std::string> lastSelectedSubjectIdentifier() const override;
    void setLastSelectedSubjectIdentifier(const std::optional<std::string>& identifier) override;
    std::optional<std::string> logoutAccessToken() const override;
    void setLogoutAccessToken(const std::optional<std::string>& token) override;
    void logout() override;

private:
    std::shared_ptr<UserDefaults> userDefaults_;
    /// Held while the installation's identity is made, so that two first readers get the same one.
    mutable std::mutex installationIDMutex_;
    mutable std::mutex logoutAccessTokenMutex_;
    std::optional<std::string> logoutAccessToken_;
};

} // namespace teralune
