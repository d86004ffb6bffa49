#include "Classes/Networking/UserField.h"

#include "Platform/Foundation/FatalError.h"

#include <array>

namespace teralune {
namespace {

constexpr std::array<std::string_view, 5> paths = {
    "firstName", "lastName", "email", "settings.numDecimalDisplay", "settings.steps",
};

} // namespace

std::string_view description(UserField field) {
    const auto index = static_cast<std::size_t>(field);
    if (index >= paths.size())
        fatalError("Unexpected enumeration value of UserField");
    return paths[index];
}

std::optional<UserField> userField(int rawValue) {
    if (rawValue < 0 || rawValue >= static_cast<int>(paths.size()))
        return std::nullopt;
    return static_cast<UserField>(rawValue);
}

} // namespace teralune
