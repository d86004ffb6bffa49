#include "Platform/Http/HeaderSafety.h"

#include "Platform/Http/HttpError.h"
#include "Platform/Http/MultipartFormData.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace teralune {

namespace {

constexpr std::array<bool, 256> tokenBytes = [] {
    constexpr std::string_view separators = "\"(),/:;<=>?@[\\]{}";
    std::array<bool, 256> bytes{};
    for (std::size_t byte = ' ' + 1; byte < 0x7f; ++byte) {
        bytes[byte] = separators.find(static_cast<char>(byte)) == std::string_view::npos;
    }
    return bytes;
}();

bool isToken(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char character) {
        return tokenBytes[static_cast<unsigned char>(character)];
    });
}

/// Bytes beyond ASCII are let through: a cookie may hold a device's name in UTF-8. Looks at every byte of
/// every header of every attempt, and so without leaving early, which lets it look at many bytes at once.
bool isValue(std::string_view value) {
    bool isSafe = true;
    for (const char character : value) {
        const auto byte = static_cast<unsigned char>(character);
        isSafe &= (byte >= ' ' || byte == '\t') & (byte != 0x7f);
    }
    return isSafe;
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
