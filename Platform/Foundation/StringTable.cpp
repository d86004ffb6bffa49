#include "Platform/Foundation/StringTable.h"

#include "Platform/Foundation/Utf8.h"

#include <fstream>
#include <iterator>

namespace teralune {

namespace {

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

char32_t combined(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

std::string decodeUtf16(std::string_view bytes, bool bigEndian) {
    const auto unit = [bytes, bigEndian](std::size_t index) -> char32_t {
        const auto first = static_cast<unsigned char>(bytes[index]);
        const auto second = static_cast<unsigned char>(bytes[index + 1]);
        return bigEndian ? char32_t{first} << 8 | second : char32_t{second} << 8 | first;
    };
    std::string text;
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
        char32_t codePoint = unit(index);
        if (isHighSurrogate(codePoint) && index + 3 < bytes.size() && isLowSurrogate(unit(index + 2))) {
            index += 2;
            codePoint = combined(codePoint, unit(index));
        }
        appendUtf8(text, codePoint);
    }
    return text;
}

std::string decoded(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        return decodeUtf16(bytes.substr(2), false);
    }
    if (bytes.starts_with("\xFE\xFF")) {
        return decodeUtf16(bytes.substr(2), true);
    }
    return replacingInvalidUtf8(bytes.substr(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0));
}

/// Reads the pieces of the file one after the other. No value means that the piece is damaged.
class Reader {
public:
    explicit Reader(std::string_view text) : rest_(text) {}

    /// Past white space and comments; false at the end and in a comment that never ends.
    bool skipBlanks() {
        while (!rest_.empty()) {
            std::size_t length = 0;
            if (std::string_view(" \t\r\n\f\v").find(rest_.front()) != std::string_view::npos) {
                length = 1;
            } else if (rest_.starts_with("//")) {
                length = rest_.find('\n');
            } else if (rest_.starts_with("/*")) {
                const std::size_t end = rest_.find("*/", 2);
                length = end == std::string_view::npos ? end : end + 2;
            } else {
                return true;
            }
            rest_.remove_prefix(std::min(length, rest_.size()));
        }
        return false;
    }

    bool take(char character) {
        if (!skipBlanks() || rest_.front() != character) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }

    std::optional<std::string> takeString() {
        if (!skipBlanks()) {
            return std::nullopt;
        }
        if (const char quote = rest_.front(); quote == '"' || quote == '\'') {
            rest_.remove_prefix(1);
            return takeQuoted(quote);
        }
        const std::size_t length = std::min(rest_.find_first_not_of(bareCharacters), rest_.size());
        if (length == 0) {
            return std::nullopt;
        }
        return std::string(takeCharacters(length));
    }

private:
    static constexpr std::string_view bareCharacters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-.:/$";

    std::string_view takeCharacters(std::size_t length) {
        const std::string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(taken.size());
        return taken;
    }

    std::optional<std::string> takeQuoted(char quote) {
        std::string text;
        while (!rest_.empty()) {
            const char character = takeCharacters(1).front();
            if (character == quote) {
                return text;
            }
            if (character != '\\') {
                text += character;
            } else if (!takeEscape(text)) {
                return std::nullopt;
            }
        }
        return std::nullopt;
    }

    bool takeEscape(std::string& text) {
        if (rest_.empty()) {
            return false;
        }
        constexpr std::string_view names = "abfnrtv";
        constexpr std::string_view meanings = "\a\b\f\n\r\t\v";
        const char escaped = takeCharacters(1).front();
        if (escaped == 'U' || escaped == 'u') {
            takeCodePoint(text);
        } else if (escaped >= '0' && escaped <= '7') {
            char32_t code = static_cast<char32_t>(escaped - '0');
            for (int count = 1; count < 3 && !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '7';
                 ++count) {
                code = code * 8 + static_cast<char32_t>(takeCharacters(1).front() - '0');
            }
            appendUtf8(text, code);
        } else if (const std::size_t index = names.find(escaped); index != std::string_view::npos) {
            text += meanings[index];
        } else {
            text += escaped;
        }
        return true;
    }

    void takeCodePoint(std::string& text) {
        char32_t codePoint = takeHexadecimal();
        const std::string_view afterFirst = rest_;
        if (isHighSurrogate(codePoint) && (rest_.starts_with("\\U") || rest_.starts_with("\\u"))) {
            rest_.remove_prefix(2);
            const char32_t low = takeHexadecimal();
            if (isLowSurrogate(low)) {
                codePoint = combined(codePoint, low);
            } else {
                rest_ = afterFirst;
            }
        }
        appendUtf8(text, codePoint);
    }

    /// Up to four digits; U+FFFD without any.
    char32_t takeHexadecimal() {
        constexpr std::string_view digits = "0123456789abcdef0123456789ABCDEF";
        char32_t code = 0;
        int count = 0;
        for (; count < 4 && !rest_.empty(); ++count) {
            const std::size_t digit = digits.find(rest_.front());
            if (digit == std::string_view::npos) {
                break;
            }
            code = code * 16 + static_cast<char32_t>(digit % 16);
            rest_.remove_prefix(1);
        }
        return count == 0 ? 0xFFFD : code;
    }

    std::string_view rest_;
};

} // namespace

StringTable StringTable::parse(std::string_view bytes) {
    const std::string text = decoded(bytes);
    Reader reader(text);
    StringTable table;
    while (reader.skipBlanks()) {
        std::optional<std::string> key = reader.takeString();
        // A key alone stands for itself.
        std::optional<std::string> value = key && reader.take('=') ? reader.takeString() : key;
        if (!value || !reader.take(';')) {
            break;
        }
        table.texts_.insert_or_assign(std::move(*key), std::move(*value));
    }
    return table;
}

StringTable StringTable::load(const std::filesystem::path& file) {
    std::error_code failure;
    if (!std::filesystem::is_regular_file(file, failure)) {
        return {};
    }
    std::ifstream stream(file, std::ios::binary);
    return parse(std::string(std::istreambuf_iterator<char>(stream), {}));
}

std::optional<std::string_view> StringTable::text(std::string_view key) const {
    const auto found = texts_.find(key);
    return found == texts_.end() ? std::nullopt : std::optional<std::string_view>(found->second);
}

} // namespace teralune
