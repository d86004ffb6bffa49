#include "Platform/Defaults/UserDefaults.h"

#include <utility>

namespace teralune {

namespace {

template<class T>
std::optional<T> valueOfType(std::optional<UserDefaults::Value> value) {
    if (!value || !std::holds_alternative<T>(*value)) {
        return std::nullopt;
    }
    return std::get<T>(std::move(*value));
}

} // namespace

std::optional<std::string> UserDefaults::string(std::string_view key) const {
    return valueOfType<std::string>(value(key));
}

std::int64_t UserDefaults::integer(std::string_view key) const {
    const std::optional<Value> found = value(key);
    if (found && std::holds_alternative<bool>(*found)) {
        return std::get<bool>(*found) ? 1 : 0;
    }
    return valueOfType<std::int64_t>(found).value_or(0);
}

bool UserDefaults::boolean(std::string_view key) const {
    return integer(key) != 0;
}

std::optional<Date> UserDefaults::date(std::string_view key) const {
    return valueOfType<Date>(value(key));
}

std::optional<boost::json::array> UserDefaults::array(std::string_view key) const {
    return valueOfType<boost::json::array>(value(key));
}

void UserDefaults::setOptional(std::string_view key, const std::optional<std::string>& text) {
    if (text) {
        set(key, *text);
    } else {
        remove(key);
    }
}

} // namespace teralune
