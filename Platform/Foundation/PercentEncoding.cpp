#include "Platform/Foundation/PercentEncoding.h"

#include "Platform/Foundation/Utf8.h"

namespace teralune {

namespace {

constexpr std::string_view unreserved = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

std::optional<unsigned> hexadecimalValue(char digit) {
    if (digit >= '0' && digit <= '9') {
        return static_cast<unsigned>(digit - '0');
    }
    if (digit >= 'A' && digit <= 'F') {
        return static_cast<unsigned>(digit - 'A' + 10);
    }
    if (digit >= 'a' && digit <= 'f') {
        return static_cast<unsigned>(digit - 'a' + 10);
    }
    return std::nullopt;
}

} // namespace

CharacterSet CharacterSet::of(std::initializer_list<std::string_view> parts) {
    CharacterSet set;
    for (const std::string_view part : parts) {
        for (const char character : part) {
            set.allowed_[static_cast<unsigned char>(character)] = true;
        }
    }
    return set;
}

CharacterSet CharacterSet::urlFragmentAllowed() {
    return of({unreserved, "!$&'()*+,;=", ":@/?"});
}

CharacterSet CharacterSet::urlQueryAllowed() {
    return urlFragmentAllowed();
}

CharacterSet CharacterSet::urlPathAllowed() {
    return of({unreserved, "!$&'()*+,=", ":@/"});
}

CharacterSet CharacterSet::without(std::string_view characters) const {
    CharacterSet set = *this;
    for (const char character : characters) {
        if (const auto code = static_cast<unsigned char>(character); code < 128) {
            set.allowed_[code] = false;
        }
    }
    return set;
}

bool CharacterSet::contains(char character) const {
    const auto code = static_cast<unsigned char>(character);
    return code < 128 && allowed_[code];
}

std::optional<std::string> addingPercentEncoding(std::string_view text, const CharacterSet& allowed) {
    if (!isValidUtf8(text)) {
        return std::nullopt;
    }
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char character : text) {
        if (allowed.contains(character)) {
            encoded += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            encoded += '%';
            encoded += digits[byte >> 4U];
            encoded += digits[byte & 0xFU];
        }
    }
    return encoded;
}

std::optional<std::string> removingPercentEncoding(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '%') {
            decoded += text[index];
            continue;
        }
        if (text.size() - index < 3) {
            return std::nullopt;
        }
        const auto high = hexadecimalValue(text[index + 1]);
        const auto low = hexadecimalValue(text[index + 2]);
        if (!high || !low) {
            return std::nullopt;
        }
        decoded += static_cast<char>(*high * 16 + *low);
        index += 2;
    }
    if (!isValidUtf8(decoded)) {
        return std::nullopt;
    }
    return decoded;
}

} // namespace teralune
