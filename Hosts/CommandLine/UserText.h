#pragma once

#include "Classes/Interfaces/SettingsPersistenceType.h"

#include <boost/json/object.hpp>

#include <string>

namespace teralune {

/// The signed-in user as the settings know one, as JSON and for people.
boost::json::object userRecord(const SettingsPersistenceType& user);
std::string userText(const SettingsPersistenceType& user);

/// A date as "2024-01-31T12:00:00Z"; null without one.
boost::json::value dateRecord(const std::optional<Date>& date);
/// A text, or null without one.
boost::json::value textRecord(const std::optional<std::string>& text);

} // namespace teralune
