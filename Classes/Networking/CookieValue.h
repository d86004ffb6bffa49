#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace teralune {

/// Whether what a server gave as a token or a session can be sent back in a cookie: no header may hold a
/// control character, and a request that is all cookie would be refused, or not even be sent, until the user
/// signs in anew. Blanks are no obstacle, line breaks among them: they are replaced when the cookie is
/// written.
inline bool canBeCookieValue(std::string_view value) {
    constexpr std::size_t longest = 16UL * 1024;
    return value.size() <= longest && std::none_of(value.begin(), value.end(), [](char character) {
               const bool isBlank = character >= '\t' && character <= '\r';
               return (static_cast<unsigned char>(character) < ' ' && !isBlank) || character == '\x7f';
           });
}

} // namespace teralune
