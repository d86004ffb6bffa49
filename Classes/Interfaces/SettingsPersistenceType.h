#pragma once

#include "Classes/Interfaces/LoginType.h"
#include "Classes/Interfaces/StepOption.h"
#include "Platform/Foundation/Date.h"

#include <cstdint>
#include <optional>
#include <string>

namespace teralune {

/// The one place where the library keeps, on the device, who is signed in, a copy of the profile, the user's
/// preferences and what the hosts remember between launches. Nothing is cached: every read goes to the store
/// and every write straight to it. Callable from any thread; two writers of one key race, and the last one
/// wins.
class SettingsPersistenceType {
public:
    virtual ~SettingsPersistenceType() = default;

    virtual std::optional<std::string> userChosenLanguage() const = 0;
    virtual void setUserChosenLanguage(const std::optional<std::string>& code) = 0;

    /// Made on the first read and the same for the life of the installation; a version 4 UUID of 36
    /// characters in upper case.
    virtual std::string installationID() const = 0;

    virtual std::optional<std::string> connectedID() const = 0;
    virtual void setConnectedID(const std::optional<std::string>& identifier) = 0;

    virtual std::optional<std::string> accessToken() const = 0;
    virtual void setAccessToken(const std::optional<std::string>& token) = 0;

    virtual std::optional<std::string> firstName() const = 0;
    virtual void setFirstName(const std::optional<std::string>& name) = 0;

    virtual std::optional<std::string> lastName() const = 0;
    virtual void setLastName(const std::optional<std::string>& name) = 0;

    virtual std::optional<std::string> userEmail() const = 0;
    virtual void setUserEmail(const std::optional<std::string>& email) = 0;

    virtual std::optional<std::string> currentGraphJson() const = 0;
    virtual void setCurrentGraphJson(const std::optional<std::string>& json) = 0;

    /// showSteps when never set or out of range.
    virtual StepOption steps() const = 0;
    virtual void setSteps(StepOption option) = 0;

    /// 5 when never set or set to 0; any other value as it was set.
    virtual std::int64_t numDecimalDisplay() const = 0;
    virtual void setNumDecimalDisplay(std::int64_t decimals) = 0;

    /// Whether suggestions are shown while typing. True until it was switched off.
    virtual bool suggestionPreference() const = 0;
    virtual void setSuggestionPreference(bool wanted) = 0;

    virtual std::optional<Date> registrationDate() const = 0;
    virtual void setRegistrationDate(const std::optional<Date>& date) = 0;

    virtual bool userHasPassword() const = 0;
    virtual void setUserHasPassword(bool hasPassword) = 0;

    /// email when never set; none when out of range.
    virtual LoginType loginType() const = 0;
    virtual void setLoginType(LoginType type) = 0;

    virtual std::optional<std::string> lastSelectedTopicIdentifier() const = 0;
    virtual void setLastSelectedTopicIdentifier(const std::optional<std::string>& identifier) = 0;

    virtual std::optional<std::string> lastSelectedSubjectIdentifier() const = 0;
    virtual void setLastSelectedSubjectIdentifier(const std::optional<std::string>& identifier) = 0;

    /// In memory only: the token that was in force just before the sign-out, for the sign-out request.
    virtual std::optional<std::string> logoutAccessToken() const = 0;
    virtual void setLogoutAccessToken(const std::optional<std::string>& token) = 0;

    /// Forgets who is signed in and keeps the token as logoutAccessToken. Sends nothing.
    virtual void logout() = 0;
};

} // namespace teralune
