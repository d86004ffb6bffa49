#pragma once

#include <optional>
#include <string_view>

namespace teralune {

/// A profile field that can be changed on its own.
enum class UserField {
    firstName = 0,
    lastName = 1,
    email = 2,
    numDecimalDisplay = 3,
    steps = 4,
};

/// The server's path of the field. A value outside the enumeration is a fatal error.
std::string_view description(UserField field);

std::optional<UserField> userField(int rawValue);

} // namespace teralune
