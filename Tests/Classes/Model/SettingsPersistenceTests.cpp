#include "Classes/Model/SettingsPersistence.h"
#include "Platform/Defaults/InMemoryUserDefaults.h"

#include <gtest/gtest.h>

#include <limits>
#include <regex>

namespace teralune {
namespace {

class Settings : public testing::Test {
protected:
    std::shared_ptr<InMemoryUserDefaults> defaults = std::make_shared<InMemoryUserDefaults>();
    SettingsPersistence settings{defaults};
};

TEST_F(Settings, each_text_has_its_own_key_and_goes_when_set_absent) {
    using S = SettingsPersistence;
    const std::tuple<std::string, std::optional<std::string> (S::*)() const,
                     void (S::*)(const std::optional<std::string>&)>
        rows[] = {
            {"UserChosenLanguage", &S::userChosenLanguage, &S::setUserChosenLanguage},
            {"connectedID", &S::connectedID, &S::setConnectedID},
            {"AccessToken", &S::accessToken, &S::setAccessToken},
            {"firstName", &S::firstName, &S::setFirstName},
            {"lastName", &S::lastName, &S::setLastName},
            {"userEmail", &S::userEmail, &S::setUserEmail},
            {"CurrentGraphJson", &S::currentGraphJson, &S::setCurrentGraphJson},
            {"LastSelectedTopicIdentifier", &S::lastSelectedTopicIdentifier,
             &S::setLastSelectedTopicIdentifier},
            {"LastSelectedSubjectIdentifier", &S::lastSelectedSubjectIdentifier,
             &S::setLastSelectedSubjectIdentifier},
        };
    for (const auto& [key, get, set] : rows) {
        EXPECT_EQ((settings.*get)(), std::nullopt) << key;
        (settings.*set)("value of " + key);
    }
    for (const auto& [key, get, set] : rows) {
        EXPECT_EQ(defaults->string(key), "value of " + key);
        EXPECT_EQ((settings.*get)(), defaults->string(key));
        (settings.*set)(std::nullopt);
        EXPECT_EQ(defaults->value(key), std::nullopt) << key;
    }
}

TEST_F(Settings, stored_integers_are_read_by_their_encoding) {
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    const std::tuple<std::int64_t, StepOption, LoginType, bool, std::int64_t> rows[] = {
        {0, StepOption::showSteps, LoginType::email, true, 5},
        {1, StepOption::hideSteps, LoginType::facebook, true, 1},
        {2, StepOption::stepByStep, LoginType::office365, false, 2},
        {3, StepOption::showSteps, LoginType::none, false, 3},
        {7, StepOption::showSteps, LoginType::none, false, 7},
        {42, StepOption::showSteps, LoginType::none, false, 42},
        {-1, StepOption::showSteps, LoginType::none, false, -1},
        {least, StepOption::showSteps, LoginType::none, false, least},
    };
    for (const auto& [stored, steps, login, suggestions, decimals] : rows) {
        for (const char* key : {"StepOption", "LoginType", "SuggestionPreference", "NumDecimalDisplay"})
            defaults->set(key, stored);
        EXPECT_EQ(settings.steps(), steps) << stored;
        EXPECT_EQ(settings.loginType(), login) << stored;
        EXPECT_EQ(settings.suggestionPreference(), suggestions) << stored;
        EXPECT_EQ(settings.numDecimalDisplay(), decimals) << stored;
    }
    settings.setSuggestionPreference(false);
    settings.setSteps(StepOption::stepByStep);
    settings.setLoginType(LoginType::none);
    settings.setNumDecimalDisplay(0);
    EXPECT_EQ(defaults->integer("SuggestionPreference"), 2);
    EXPECT_EQ(defaults->integer("StepOption"), 2);
    EXPECT_EQ(defaults->integer("LoginType"), 3);
    EXPECT_EQ(settings.numDecimalDisplay(), 5);
    settings.setSuggestionPreference(true);
    EXPECT_EQ(defaults->integer("SuggestionPreference"), 1);
}

TEST_F(Settings, the_installation_is_named_once_and_for_all) {
    const std::string name = settings.installationID();
    EXPECT_TRUE(std::regex_match(
        name, std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")))
        << name;
    EXPECT_EQ(defaults->string("InstallationId"), name);
    settings.logout();
    EXPECT_EQ(settings.installationID(), name);
    EXPECT_EQ(SettingsPersistence(defaults).installationID(), name);
}

TEST_F(Settings, logout_forgets_the_user_and_keeps_the_rest) {
    settings.setConnectedID("c1");
    settings.setAccessToken("t1");
    settings.setFirstName("Ada");
    settings.setLastName("L");
    settings.setUserEmail("ada@example.com");
    settings.setRegistrationDate(Date(std::chrono::seconds(1'551'802'029)));
    settings.setUserHasPassword(true);
    settings.setLoginType(LoginType::office365);
    settings.setCurrentGraphJson("{}");
    EXPECT_EQ(settings.registrationDate(), Date(std::chrono::seconds(1'551'802'029)));

    settings.logout();
    for (const char* key :
         {"connectedID", "AccessToken", "firstName", "lastName", "userEmail", "RegistrationDate"})
        EXPECT_EQ(defaults->value(key), std::nullopt) << key;
    EXPECT_EQ(settings.logoutAccessToken(), "t1");
    EXPECT_TRUE(settings.userHasPassword());
    EXPECT_EQ(settings.loginType(), LoginType::office365);
    EXPECT_EQ(settings.currentGraphJson(), "{}");

    settings.logout();
    EXPECT_EQ(settings.logoutAccessToken(), std::nullopt);
}

} // namespace
} // namespace teralune
