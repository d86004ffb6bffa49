#include "Classes/Model/SettingsPersistence.h"

#include "Platform/Defaults/UserDefaults.h"
#include "Platform/Foundation/UUID.h"

namespace teralune {
namespace {

// The mixed capitalisation is that of the stores in the field.
namespace key {
constexpr std::string_view userChosenLanguage = "UserChosenLanguage";
constexpr std::string_view installationID = "InstallationId";
constexpr std::string_view connectedID = "connectedID";
constexpr std::string_view accessToken = "AccessToken";
constexpr std::string_view firstName = "firstName";
constexpr std::string_view lastName = "lastName";
constexpr std::string_view userEmail = "userEmail";
constexpr std::string_view currentGraphJson = "CurrentGraphJson";
constexpr std::string_view steps = "StepOption";
constexpr std::string_view numDecimalDisplay = "NumDecimalDisplay";
constexpr std::string_view suggestionPreference = "SuggestionPreference";
constexpr std::string_view registrationDate = "RegistrationDate";
constexpr std::string_view userHasPassword = "UserHasPassword";
constexpr std::string_view loginType = "LoginType";
constexpr std::string_view lastSelectedTopicIdentifier = "LastSelectedTopicIdentifier";
constexpr std::string_view lastSelectedSubjectIdentifier = "LastSelectedSubjectIdentifier";
} // namespace key

constexpr std::int64_t defaultDecimals = 5;

// 0 is what a key that was never written reads as, so that a preference nobody chose is on; "off" needs a
// value of its own.
constexpr std::int64_t suggestionsOn = 1;
constexpr std::int64_t suggestionsOff = 2;

} // namespace

SettingsPersistence::SettingsPersistence(std::shared_ptr<UserDefaults> userDefaults)
    : userDefaults_(std::move(userDefaults)) {}

std::optional<std::string> SettingsPersistence::userChosenLanguage() const {
    return userDefaults_->string(key::userChosenLanguage);
}

void SettingsPersistence::setUserChosenLanguage(const std::optional<std::string>& code) {
    userDefaults_->setOptional(key::userChosenLanguage, code);
}

std::string SettingsPersistence::installationID() const {
    if (auto existing = userDefaults_->string(key::installationID))
        return *std::move(existing);
    const std::lock_guard lock(installationIDMutex_);
    if (auto existing = userDefaults_->string(key::installationID))
        return *std::move(existing);
    std::string made = makeUUIDString();
    userDefaults_->set(key::installationID, made);
    return made;
}

std::optional<std::string> SettingsPersistence::connectedID() const {
    return userDefaults_->string(key::connectedID);
}

void SettingsPersistence::setConnectedID(const std::optional<std::string>& identifier) {
    userDefaults_->setOptional(key::connectedID, identifier);
}

std::optional<std::string> SettingsPersistence::accessToken() const {
    return userDefaults_->string(key::accessToken);
}

void SettingsPersistence::setAccessToken(const std::optional<std::string>& token) {
    userDefaults_->setOptional(key::accessToken, token);
}

std::optional<std::string> SettingsPersistence::firstName() const {
    return userDefaults_->string(key::firstName);
}

void SettingsPersistence::setFirstName(const std::optional<std::string>& name) {
    userDefaults_->setOptional(key::firstName, name);
}

std::optional<std::string> SettingsPersistence::lastName() const {
    return userDefaults_->string(key::lastName);
}

void SettingsPersistence::setLastName(const std::optional<std::string>& name) {
    userDefaults_->setOptional(key::lastName, name);
}

std::optional<std::string> SettingsPersistence::userEmail() const {
    return userDefaults_->string(key::userEmail);
}

void SettingsPersistence::setUserEmail(const std::optional<std::string>& email) {
    userDefaults_->setOptional(key::userEmail, email);
}

std::optional<std::string> SettingsPersistence::currentGraphJson() const {
    return userDefaults_->string(key::currentGraphJson);
}

void SettingsPersistence::setCurrentGraphJson(const std::optional<std::string>& json) {
    userDefaults_->setOptional(key::currentGraphJson, json);
}

StepOption SettingsPersistence::steps() const {
    switch (userDefaults_->integer(key::steps)) {
    case 1:
        return StepOption::hideSteps;
    case 2:
        return StepOption::stepByStep;
    default:
        return StepOption::showSteps;
    }
}

void SettingsPersistence::setSteps(StepOption option) {
    userDefaults_->set(key::steps, static_cast<std::int64_t>(option));
}

std::int64_t SettingsPersistence::numDecimalDisplay() const {
    const std::int64_t stored = userDefaults_->integer(key::numDecimalDisplay);
    return stored == 0 ? defaultDecimals : stored;
}

void SettingsPersistence::setNumDecimalDisplay(std::int64_t decimals) {
    userDefaults_->set(key::numDecimalDisplay, decimals);
}

bool SettingsPersistence::suggestionPreference() const {
    // Taken as unsigned, so that a negative value is "off" too.
    const auto stored = static_cast<std::uint64_t>(userDefaults_->integer(key::suggestionPreference));
    return stored < static_cast<std::uint64_t>(suggestionsOff);
}

void SettingsPersistence::setSuggestionPreference(bool wanted) {
    userDefaults_->set(key::suggestionPreference, wanted ? suggestionsOn : suggestionsOff);
}

std::optional<Date> SettingsPersistence::registrationDate() const {
    return userDefaults_->date(key::registrationDate);
}

void SettingsPersistence::setRegistrationDate(const std::optional<Date>& date) {
    if (date)
        userDefaults_->set(key::registrationDate, *date);
    else
        userDefaults_->remove(key::registrationDate);
}

bool SettingsPersistence::userHasPassword() const {
    return userDefaults_->boolean(key::userHasPassword);
}

void SettingsPersistence::setUserHasPassword(bool hasPassword) {
    userDefaults_->set(key::userHasPassword, hasPassword);
}

LoginType SettingsPersistence::loginType() const {
    switch (userDefaults_->integer(key::loginType)) {
    case 0:
        return LoginType::email;
    case 1:
        return LoginType::facebook;
    case 2:
        return LoginType::office365;
    default:
        return LoginType::none;
    }
}

void SettingsPersistence::setLoginType(LoginType type) {
    userDefaults_->set(key::loginType, static_cast<std::int64_t>(type));
}

std::optional<std::string> SettingsPersistence::lastSelectedTopicIdentifier() const {
    return userDefaults_->string(key::lastSelectedTopicIdentifier);
}

void SettingsPersistence::setLastSelectedTopicIdentifier(const std::optional<std::string>& identifier) {
    userDefaults_->setOptional(key::lastSelectedTopicIdentifier, identifier);
}

std::optional<std::string> SettingsPersistence::lastSelectedSubjectIdentifier() const {
    return userDefaults_->string(key::lastSelectedSubjectIdentifier);
}

void SettingsPersistence::setLastSelectedSubjectIdentifier(const std::optional<std::string>& identifier) {
    userDefaults_->setOptional(key::lastSelectedSubjectIdentifier, identifier);
}

std::optional<std::string> SettingsPersistence::logoutAccessToken() const {
    const std::lock_guard lock(logoutAccessTokenMutex_);
    return logoutAccessToken_;
}

void SettingsPersistence::setLogoutAccessToken(const std::optional<std::string>& token) {
    const std::lock_guard lock(logoutAccessTokenMutex_);
    logoutAccessToken_ = token;
}

void SettingsPersistence::logout() {
    setConnectedID(std::nullopt);
    setFirstName(std::nullopt);
    setLastName(std::nullopt);
    setUserEmail(std::nullopt);
    setRegistrationDate(std::nullopt);
    setLogoutAccessToken(accessToken());
    setAccessToken(std::nullopt);
}

} // namespace teralune
