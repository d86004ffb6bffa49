#pragma once

#include "Classes/Interfaces/StepOption.h"
#include "Platform/Foundation/Date.h"

#include <boost/json/object.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace teralune {

/// The preferences that the server keeps for the user.
struct UserSettings {
    std::int64_t numDecimalDisplay = 5;
    StepOption steps = StepOption::showSteps;

    static UserSettings map(const boost::json::object& json);
};

/// The user as the server describes them. A member that is missing or of another type has its default.
struct UserData {
    std::optional<std::string> firstName;
    std::optional<std::string> lastName;
    std::optional<std::string> email;
    std::optional<Date> registrationDate;
    std::vector<std::string> dismissedNotifications;
    std::optional<UserSettings> settings;
    bool hasPassword = false;

    static UserData map(const boost::json::object& json);
};

} // namespace teralune
