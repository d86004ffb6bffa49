#include "Platform/Http/HeaderSafety.h"

#include "Platform/Http/HttpError.h"
#include "Platform/Http/MultipartFormData.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace teralune {

namespace {

/// For each byte whether it may stand in a name and in a value; every header of every attempt is looked at.
struct AllowedBytes {
    std::array<bool, 256> inToken{};
    /// Bytes beyond ASCII are let through: a cookie may hold a device's name in UTF-8.
    std::array<bool, 256> inValue{};
};

constexpr AllowedBytes allowed = [] {
    constexpr std::string_view separators = "\"(),/:;<=>?@[\\]{}";
    AllowedBytes bytes;
    for (std::size_t byte = 0; byte < 256; ++byte) {
        const bool isSeparator = separators.find(static_cast<char>(byte)) != std::string_view::npos;
        bytes.inToken[byte] = byte > ' ' && byte < 0x7f && !isSeparator;
        bytes.inValue[byte] = byte == '\t' || (byte >= ' ' && byte != 0x7f);
    }
    return bytes;
}();

bool consistsOf(const std::array<bool, 256>& bytes, std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [&bytes](char character) { return bytes[static_cast<unsigned char>(character)]; });
}

bool isToken(std::string_view name) {
    return !name.empty() && consistsOf(allowed.inToken, name);
}

bool isValue(std::string_view value) {
    return consistsOf(allowed.inValue, value);
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
