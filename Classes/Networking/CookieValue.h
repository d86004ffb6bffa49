#pragma once

#include <algorithm>
#include <string_view>

namespace teralune {

/// Whether what a server gave as a token or a session can be sent back in a cookie: no header may hold a
/// control character. Blanks are no obstacle, line breaks among them: they are replaced when the cookie is
/// written.
inline bool canBeCookieValue(std::string_view value) {
    return std::none_of(value.begin(), value.end(), [](char character) {
        const bool isBlank = character >= '\t' && character <= '\r';
        return (static_cast<unsigned char>(character) < ' ' && !isBlank) || character == '\x7f';
    });
}

} // namespace teralune
