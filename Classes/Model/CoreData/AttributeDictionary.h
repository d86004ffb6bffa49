#pragma once

#include "Platform/Foundation/Date.h"

#include <functional>
#include <map>
#include <string>
#include <variant>

namespace teralune {

/// The attributes of one stored object by name. An attribute that has no value has no key.
using AttributeDictionary = std::map<std::string, std::variant<std::string, bool, Date>, std::less<>>;

} // namespace teralune
