#include "Platform/Foundation/StringFormat.h"

#include "Platform/Foundation/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace teralune {

namespace {

/// A format may come from a string table, so a width of a thousand million must cost nothing.
constexpr std::size_t largestField = 1000;

struct Placeholder {
    bool leftAligned = false;
    bool zeroPadded = false;
    bool alternate = false;
    char positiveSign = 0;
    std::size_t width = 0;
    std::optional<std::size_t> precision;
    /// One-based, as in "%2$@"; absent for the next argument in turn.
    std::optional<std::size_t> position;
    bool longValue = false;
    char conversion = 0;
};

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

std::size_t takeNumber(std::string_view& text) {
    std::size_t number = 0;
    while (!text.empty() && isDigit(text.front())) {
        number = std::min(number * 10 + static_cast<std::size_t>(text.front() - '0'), largestField);
        text.remove_prefix(1);
    }
    return number;
}

void takePosition(std::string_view& text, Placeholder& placeholder) {
    std::string_view rest = text;
    const std::size_t number = takeNumber(rest);
    if (number > 0 && rest.starts_with('$')) {
        placeholder.position = number;
        text = rest.substr(1);
    }
}

void takeFlags(std::string_view& text, Placeholder& placeholder) {
    for (; !text.empty(); text.remove_prefix(1)) {
        switch (text.front()) {
        case '-':
            placeholder.leftAligned = true;
            break;
        case '0':
            placeholder.zeroPadded = true;
            break;
        case '#':
            placeholder.alternate = true;
            break;
        case '+':
            placeholder.positiveSign = '+';
            break;
        case ' ':
            placeholder.positiveSign = placeholder.positiveSign == '+' ? '+' : ' ';
            break;
        default:
            return;
        }
    }
}

/// Takes what follows a "%" from the text; no value, and nothing taken, for anything that is no placeholder.
std::optional<Placeholder> takePlaceholder(std::string_view& text) {
    Placeholder placeholder;
    std::string_view rest = text;
    takePosition(rest, placeholder);
    takeFlags(rest, placeholder);
    placeholder.width = takeNumber(rest);
    if (rest.starts_with('.')) {
        rest.remove_prefix(1);
        placeholder.precision = takeNumber(rest);
    }
    while (!rest.empty() && std::string_view("hlqzjt").find(rest.front()) != std::string_view::npos) {
        placeholder.longValue = rest.front() != 'h';
        rest.remove_prefix(1);
    }
    if (rest.empty() || std::string_view("@diuxXfs").find(rest.front()) == std::string_view::npos) {
        return std::nullopt;
    }
    placeholder.conversion = rest.front();
    text = rest.substr(1);
    return placeholder;
}

std::int64_t asInteger(double number) {
    constexpr double limit = 9223372036854775808.0;
    if (std::isnan(number)) {
        return 0;
    }
    if (number >= limit) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return number < -limit ? std::numeric_limits<std::int64_t>::min() : static_cast<std::int64_t>(number);
}

/// Digits without a sign. Locale-independent, since a toolkit may have set the process's locale.
template<class Number, class... Options>
std::string digitsOf(Number number, Options... options) {
    // The largest double has 309 digits before its point.
    char buffer[largestField + 400];
    const auto [end, failure] = std::to_chars(buffer, buffer + sizeof buffer, number, options...);
    return failure == std::errc() ? std::string(buffer, end) : std::string();
}

std::string padded(const Placeholder& placeholder, std::string_view sign, const std::string& digits,
                   bool zeroPadded) {
    const std::size_t length = sign.size() + digits.size();
    const std::size_t missing = placeholder.width > length ? placeholder.width - length : 0;
    if (placeholder.leftAligned) {
        return std::string(sign) + digits + std::string(missing, ' ');
    }
    if (zeroPadded) {
        return std::string(sign) + std::string(missing, '0') + digits;
    }
    return std::string(missing, ' ') + std::string(sign) + digits;
}

std::string formatText(const Placeholder& placeholder, std::string_view text) {
    if (placeholder.precision) {
        text = text.substr(0, utf8PrefixLength(text, *placeholder.precision));
    }
    return padded(placeholder, "", std::string(text), false);
}

std::string formatInteger(const Placeholder& placeholder, std::int64_t number) {
    std::string sign;
    std::string digits;
    if (placeholder.conversion == 'd' || placeholder.conversion == 'i') {
        const auto magnitude = static_cast<std::uint64_t>(number);
        digits = digitsOf(number < 0 ? 0 - magnitude : magnitude);
        sign =
            number < 0 ? "-" : std::string(placeholder.positiveSign != 0 ? 1 : 0, placeholder.positiveSign);
    } else {
        const bool narrow = !placeholder.longValue && number < 0 && number >= std::numeric_limits<int>::min();
        const auto magnitude =
            narrow ? static_cast<std::uint32_t>(number) : static_cast<std::uint64_t>(number);
        digits = digitsOf(magnitude, placeholder.conversion == 'u' ? 10 : 16);
        if (placeholder.conversion == 'X') {
            std::transform(digits.begin(), digits.end(), digits.begin(), [](char digit) {
                return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
            });
        }
        if (placeholder.alternate && placeholder.conversion != 'u' && number != 0) {
            sign = placeholder.conversion == 'x' ? "0x" : "0X";
        }
    }
    if (placeholder.precision && digits.size() < *placeholder.precision) {
        digits.insert(0, *placeholder.precision - digits.size(), '0');
    }
    return padded(placeholder, sign, digits, placeholder.zeroPadded && !placeholder.precision);
}

std::string formatNumber(const Placeholder& placeholder, double number) {
    const std::string sign =
        std::signbit(number) ? "-"
                             : std::string(placeholder.positiveSign != 0 ? 1 : 0, placeholder.positiveSign);
    const std::string digits = digitsOf(std::fabs(number), std::chars_format::fixed,
                                        static_cast<int>(placeholder.precision.value_or(6)));
    return padded(placeholder, sign, digits, placeholder.zeroPadded && std::isfinite(number));
}

std::string formatArgument(const Placeholder& placeholder, const FormatArgument& argument) {
    if (const auto* text = std::get_if<std::string>(&argument)) {
        return formatText(placeholder, *text);
    }
    const auto* integer = std::get_if<std::int64_t>(&argument);
    const auto* number = std::get_if<double>(&argument);
    if (placeholder.conversion == '@' || placeholder.conversion == 's') {
        return formatText(placeholder, integer != nullptr ? digitsOf(*integer) : digitsOf(*number));
    }
    if (placeholder.conversion == 'f') {
        return formatNumber(placeholder, integer != nullptr ? static_cast<double>(*integer) : *number);
    }
    return formatInteger(placeholder, integer != nullptr ? *integer : asInteger(*number));
}

} // namespace

std::string formatString(std::string_view format, std::span<const FormatArgument> arguments) {
    std::string result;
    std::size_t next = 0;
    while (!format.empty()) {
        const std::size_t percent = std::min(format.find('%'), format.size());
        result += format.substr(0, percent);
        format.remove_prefix(percent);
        if (format.empty()) {
            break;
        }
        if (format.starts_with("%%")) {
            result += '%';
            format.remove_prefix(2);
            continue;
        }
        std::string_view rest = format.substr(1);
        const std::optional<Placeholder> placeholder = takePlaceholder(rest);
        const std::string_view written = format.substr(0, placeholder ? format.size() - rest.size() : 1);
        format.remove_prefix(written.size());
        const std::size_t index = placeholder && placeholder->position ? *placeholder->position - 1 : next;
        if (!placeholder || index >= arguments.size()) {
            result += written;
            continue;
        }
        if (!placeholder->position) {
            ++next;
        }
        result += formatArgument(*placeholder, arguments[index]);
    }
    return result;
}

std::string formatString(std::string_view format, std::initializer_list<FormatArgument> arguments) {
    return formatString(format, std::span<const FormatArgument>(arguments.begin(), arguments.size()));
}

} // namespace teralune
