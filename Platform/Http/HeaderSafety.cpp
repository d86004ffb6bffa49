#include "Platform/Http/HeaderSafety.h"

#include "Platform/Http/HttpError.h"
#include "Platform/Http/MultipartFormData.h"

#include <algorithm>
#include <string_view>

namespace teralune {

namespace {

bool isTokenCharacter(char character) {
    constexpr std::string_view separators = "\"(),/:;<=>?@[\\]{}";
    return character > ' ' && character < '\x7f' && separators.find(character) == std::string_view::npos;
}

/// Bytes beyond ASCII are let through: a cookie may hold a device's name in UTF-8.
bool isValueCharacter(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return character == '\t' || (byte >= ' ' && byte != 0x7f);
}

bool isToken(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), isTokenCharacter);
}

bool isValue(std::string_view value) {
    return std::all_of(value.begin(), value.end(), isValueCharacter);
}

} // namespace

std::optional<Error> unsafeHeaderError(const URLRequest& request) {
    for (const auto& [name, value] : request.headers) {
        if (!isToken(name)) {
            return httpTransportError(HttpTransportError::unknown, "a header's name is not a token");
        }
        if (!isValue(value)) {
            return httpTransportError(HttpTransportError::unknown,
                                      "the header " + name + " holds a control character");
        }
    }
    if (const auto* form = std::get_if<std::shared_ptr<const MultipartFormData>>(&request.body)) {
        const auto& parts = (*form)->parts();
        if (!std::all_of(parts.begin(), parts.end(),
                         [](const auto& part) { return isValue(part.mimeType); })) {
            return httpTransportError(HttpTransportError::unknown,
                                      "the type of a form's part holds a control character");
        }
    }
    return std::nullopt;
}

} // namespace teralune
