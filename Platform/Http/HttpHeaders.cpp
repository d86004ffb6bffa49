#include "Platform/Http/HttpHeaders.h"

#include "Platform/Foundation/AsciiText.h"

#include <algorithm>

namespace teralune {

std::optional<std::string> HttpHeaders::value(std::string_view name) const {
    const std::string_view separator = equalsIgnoringCase(name, "Cookie") ? ";" : ", ";
    std::optional<std::string> joined;
    for (const auto& [fieldName, fieldValue] : fields_) {
        if (!equalsIgnoringCase(fieldName, name)) {
            continue;
        }
        if (joined) {
            joined->append(separator).append(fieldValue);
        } else {
            joined = fieldValue;
        }
    }
    return joined;
}

bool HttpHeaders::contains(std::string_view name) const {
    return std::any_of(fields_.begin(), fields_.end(),
                       [name](const Field& field) { return equalsIgnoringCase(field.first, name); });
}

void HttpHeaders::set(std::string_view name, std::string value) {
    remove(name);
    fields_.emplace_back(name, std::move(value));
}

void HttpHeaders::add(std::string name, std::string value) {
    fields_.emplace_back(std::move(name), std::move(value));
}

void HttpHeaders::remove(std::string_view name) {
    std::erase_if(fields_, [name](const Field& field) { return equalsIgnoringCase(field.first, name); });
}

} // namespace teralune
