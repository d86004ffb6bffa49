#include "Platform/Foundation/Utf8.h"

#include <cstdint>
#include <cstring>

namespace teralune {

namespace {

struct Sequence {
    std::size_t length;
    bool valid;
};

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

/// The character that begins the bytes, or the longest piece of them that could have begun one.
Sequence leadingSequence(std::string_view bytes) {
    const auto at = [bytes](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    const unsigned char first = at(0);
    if (first < 0x80) {
        return {1, true};
    }
    if (first < 0xC2 || first > 0xF4) {
        return {1, false};
    }
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    // The second byte's range is what keeps out overlong forms, surrogates and values beyond U+10FFFF.
    const unsigned char lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned char highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (bytes.size() < 2 || at(1) < lowest || at(1) > highest) {
        return {1, false};
    }
    for (std::size_t index = 2; index < length; ++index) {
        if (index >= bytes.size() || !isContinuation(at(index))) {
            return {index, false};
        }
    }
    return {length, true};
}

std::size_t asciiLength(std::string_view bytes) {
    std::size_t index = 0;
    while (index + 8 <= bytes.size()) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + index, sizeof word);
        if ((word & 0x8080808080808080ULL) != 0) {
            break;
        }
        index += 8;
    }
    while (index < bytes.size() && static_cast<unsigned char>(bytes[index]) < 0x80) {
        ++index;
    }
    return index;
}

} // namespace

bool isAscii(std::string_view bytes) {
    return asciiLength(bytes) == bytes.size();
}

bool isValidUtf8(std::string_view bytes) {
    for (bytes.remove_prefix(asciiLength(bytes)); !bytes.empty(); bytes.remove_prefix(asciiLength(bytes))) {
        const Sequence sequence = leadingSequence(bytes);
        if (!sequence.valid) {
            return false;
        }
        bytes.remove_prefix(sequence.length);
    }
    return true;
}

std::string replacingInvalidUtf8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const Sequence sequence = leadingSequence(bytes);
        text += sequence.valid ? bytes.substr(0, sequence.length) : std::string_view("\xEF\xBF\xBD");
        bytes.remove_prefix(sequence.length);
    }
    return text;
}

std::string decodeLatin1(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        appendUtf8(text, static_cast<unsigned char>(byte));
    }
    return text;
}

void appendUtf8(std::string& text, char32_t codePoint) {
    if (codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
        codePoint = 0xFFFD;
    }
    const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
    const auto appendContinuation = [&](int shift) { append(0x80 | ((codePoint >> shift) & 0x3F)); };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xC0 | (codePoint >> 6));
        appendContinuation(0);
    } else if (codePoint < 0x10000) {
        append(0xE0 | (codePoint >> 12));
        appendContinuation(6);
        appendContinuation(0);
    } else {
        append(0xF0 | (codePoint >> 18));
        appendContinuation(12);
        appendContinuation(6);
        appendContinuation(0);
    }
}

std::size_t utf8PrefixLength(std::string_view text, std::size_t maximumBytes) {
    if (text.size() <= maximumBytes) {
        return text.size();
    }
    std::size_t length = maximumBytes;
    while (length > 0 && isContinuation(static_cast<unsigned char>(text[length]))) {
        --length;
    }
    return length;
}

} // namespace teralune
