#include "Classes/Networking/UserData.h"

#include "Classes/Networking/DateFormatTransform.h"
#include "Platform/Foundation/JsonFields.h"

#include <array>

namespace teralune {
namespace {

/// The server keeps the option as it was sent to it, by name; the raw value is understood too.
std::optional<StepOption> stepOption(const boost::json::value& json) {
    static constexpr std::array<std::string_view, 3> names = {"showSteps", "hideSteps", "stepByStep"};
    std::string name;
    std::int64_t rawValue = -1;
    readJson(json, rawValue);
    readJson(json, name);
    for (std::size_t index = 0; index < names.size(); ++index)
        if (names[index] == name || static_cast<std::int64_t>(index) == rawValue)
            return static_cast<StepOption>(index);
    return std::nullopt;
}

} // namespace

UserSettings UserSettings::map(const boost::json::object& json) {
    static constexpr std::tuple fields{JsonField{"numDecimalDisplay", &UserSettings::numDecimalDisplay}};
    UserSettings settings = mapFields(json, fields);
    if (const boost::json::value* steps = json.if_contains("steps"))
        settings.steps = stepOption(*steps).value_or(settings.steps);
    return settings;
}

UserData UserData::map(const boost::json::object& json) {
    static constexpr std::tuple fields{
        JsonField{"firstName", &UserData::firstName},
        JsonField{"lastName", &UserData::lastName},
        JsonField{"email", &UserData::email},
        JsonField{"dismissedNotifications", &UserData::dismissedNotifications},
        JsonField{"settings", &UserData::settings},
        JsonField{"hasPassword", &UserData::hasPassword},
    };
    static const DateFormatTransform registrationDates;
    UserData user = mapFields(json, fields);
    if (const boost::json::value* date = json.if_contains("registrationDate"))
        user.registrationDate = registrationDates.transformFromJSON(*date);
    return user;
}

} // namespace teralune
