#include "Classes/Support/Language.h"
#include "Hosts/CommandLine/CommandContext.h"
#include "Hosts/CommandLine/CommandSet.h"
#include "Platform/Foundation/Bundle.h"

#include <CLI/CLI.hpp>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace teralune {
namespace {

/// By the raw value of the option; the words are the server's.
constexpr std::array<std::string_view, 3> stepWords = {"showSteps", "hideSteps", "stepByStep"};
constexpr std::int64_t fewestDecimals = 2;
constexpr std::int64_t mostDecimals = 10;
constexpr std::size_t widestCode = 5;

struct Setting {
    std::string key;
    std::string value;
};

Result<void> showSettings(const CommandContext& context) {
    const SettingsPersistenceType& settings = context.application.persistence();
    const std::string_view steps = stepWords.at(static_cast<std::size_t>(settings.steps()));
    const std::string language = Language::currentLanguageIdentifier(context.application.platform());
    const std::string decimals = std::to_string(settings.numDecimalDisplay());
    const std::string_view suggestions = settings.suggestionPreference() ? "on" : "off";
    std::string text =
        "steps        " + std::string(steps) + "\ndecimals     " + decimals + "\nsuggestions  ";
    text += std::string(suggestions) + "\nlanguage     " + language + "\n";
    context.output.show({{"steps", steps},
                         {"decimals", settings.numDecimalDisplay()},
                         {"suggestions", settings.suggestionPreference()},
                         {"language", language}},
                        text);
    return {};
}

/// For a signed-in user the server keeps the setting too, and has to have it first.
Result<void> saveOnServer(const CommandContext& context, UserField field, const std::string& value) {
    if (!context.application.userAccountModel().isLoggedIn())
        return {};
    if (!context.waitFor(context.application.networking().updateUserField(field, value)))
        return commandError(context.text("UPDATE_SETTINGS_FAIL"));
    return {};
}

Result<void> setSteps(const CommandContext& context, const std::string& value) {
    const auto word = std::find(stepWords.begin(), stepWords.end(), value);
    if (word == stepWords.end())
        return commandError("steps is showSteps, hideSteps or stepByStep.", ExitCode::wrongUsage);
    SettingsPersistenceType& settings = context.application.persistence();
    const auto option = static_cast<StepOption>(word - stepWords.begin());
    if (option != settings.steps())
        if (Result<void> saved = saveOnServer(context, UserField::steps, value); !saved)
            return saved;
    settings.setSteps(option);
    return showSettings(context);
}

Result<void> setDecimals(const CommandContext& context, const std::string& value) {
    std::int64_t decimals = 0;
    const auto [end, problem] = std::from_chars(value.data(), value.data() + value.size(), decimals);
    if (problem != std::errc() || end != value.data() + value.size() || decimals < fewestDecimals ||
        decimals > mostDecimals)
        return commandError("decimals is a whole number from 2 to 10.", ExitCode::wrongUsage);
    SettingsPersistenceType& settings = context.application.persistence();
    if (decimals != settings.numDecimalDisplay())
        if (Result<void> saved =
                saveOnServer(context, UserField::numDecimalDisplay, std::to_string(decimals));
            !saved)
            return saved;
    settings.setNumDecimalDisplay(decimals);
    return showSettings(context);
}

Result<void> setSuggestions(const CommandContext& context, const std::string& value) {
    if (value != "on" && value != "off")
        return commandError("suggestions is on or off.", ExitCode::wrongUsage);
    context.application.persistence().setSuggestionPreference(value == "on");
    return showSettings(context);
}

Result<void> set(const CommandContext& context, const Setting& setting) {
    if (setting.key == "steps")
        return setSteps(context, setting.value);
    return setting.key == "decimals" ? setDecimals(context, setting.value)
                                     : setSuggestions(context, setting.value);
}

Result<void> showLanguages(const CommandContext& context) {
    const std::string current = Language::currentLanguageIdentifier(context.application.platform());
    boost::json::array offered;
    std::string text;
    for (const auto& [code, label] : Language::localizationsWithLabels()) {
        // Requests know one Portuguese only.
        const bool isCurrent = code == current || (current == "pt" && code == "pt-PT");
        offered.push_back({{"code", code}, {"label", label}});
        text += isCurrent ? "* " : "  ";
        text += code;
        text.append(widestCode - std::min(widestCode, code.size()), ' ');
        text += "  ";
        text += label;
        text += '\n';
    }
    context.output.show({{"current", current}, {"offered", std::move(offered)}}, text);
    return {};
}

Result<void> setLanguage(const CommandContext& context, const std::string& code) {
    context.application.persistence().setUserChosenLanguage(code);
    Bundle::set(code, context.application.platform());
    return showLanguages(context);
}

std::vector<std::string> languageCodes() {
    std::vector<std::string> codes;
    for (const auto& [code, label] : Language::localizationsWithLabels())
        codes.push_back(code);
    return codes;
}

} // namespace

void addSettingsCommands(CommandSet& commands) {
    CLI::App& settings = commands.add("settings", "Show the settings",
                                      [](CommandContext& context) { return showSettings(context); });
    settings.require_subcommand(0, 1);
    const auto setting = std::make_shared<Setting>();
    CLI::App& changing = commands.add(
        "set", "Change a setting; a signed-in user's server has to agree first",
        [setting](CommandContext& context) { return set(context, *setting); }, &settings);
    changing.add_option("KEY", setting->key, "steps, decimals or suggestions")
        ->required()
        ->check(CLI::IsMember({"steps", "decimals", "suggestions"}));
    changing.add_option("VALUE", setting->value, "showSteps, hideSteps, stepByStep; 2 to 10; on, off")
        ->required();

    const auto code = std::make_shared<std::string>();
    commands
        .add("language", "Show the languages, or choose one",
             [code](CommandContext& context) {
                 return code->empty() ? showLanguages(context) : setLanguage(context, *code);
             })
        .add_option("CODE", *code, "The language to use from now on")
        ->check(CLI::IsMember(languageCodes()));
}

} // namespace teralune
