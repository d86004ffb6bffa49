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

constexpr unsigned char isControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return static_cast<unsigned char>((byte < ' ') & (byte != '\t')) |
           static_cast<unsigned char>(byte == 0x7f);
}

/// Bytes beyond ASCII are let through: a cookie may hold a device's name in UTF-8. Looks at every byte of
/// every header of every attempt, and so in blocks of a fixed length, which the compiler looks at all at
/// once.
bool isValue(std::string_view value) {
    constexpr std::size_t block = 32;
    unsigned char isUnsafe = 0;
    for (; value.size() >= block; value.remove_prefix(block)) {
        for (std::size_t index = 0; index < block; ++index) {
            isUnsafe |= isControl(value[index]);
        }
    }
    for (const char character : value) {
        isUnsafe |= isControl(character);
    }
    return isUnsafe == 0;
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
