#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace teralune {

/// How many characters a reader sees in a UTF-8 text: an emoji with its modifiers, a letter with its accents
/// and a CR LF each count as one (Unicode's grapheme clusters).
std::size_t characterCount(std::string_view text);

/// The text's first characters, in the same sense; the whole text when it has no more than that.
std::string firstCharacters(std::string_view text, std::size_t count);

} // namespace teralune
