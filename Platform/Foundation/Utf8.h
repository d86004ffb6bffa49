#pragma once

#include <string>
#include <string_view>

namespace teralune {

/// Whether every byte is below 0x80.
bool isAscii(std::string_view bytes);

/// Whether the bytes are UTF-8 as Unicode defines it: no overlong forms, no surrogates, nothing beyond
/// U+10FFFF.
bool isValidUtf8(std::string_view bytes);

/// The bytes as valid UTF-8: each longest piece that begins no valid character becomes one U+FFFD.
std::string replacingInvalidUtf8(std::string_view bytes);

/// The UTF-8 text of ISO 8859-1 bytes, each of which is the code point of its value.
std::string decodeLatin1(std::string_view bytes);

/// Appends the UTF-8 form of a code point; U+FFFD for a surrogate or a value beyond U+10FFFF.
void appendUtf8(std::string& text, char32_t codePoint);

/// The length of the text's longest beginning that is at most this many bytes and cuts no character apart.
std::size_t utf8PrefixLength(std::string_view text, std::size_t maximumBytes);

} // namespace teralune
