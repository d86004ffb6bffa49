#include "SolverService/Http/Parameters.h"

#include <algorithm>

namespace teralune::service {

namespace {

int hexadecimalDigit(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    if (character >= 'a' && character <= 'f') {
        return character - 'a' + 10;
    }
    if (character >= 'A' && character <= 'F') {
        return character - 'A' + 10;
    }
    return -1;
}

/// The length of the well-formed character at the start of text; 0 when there is none.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) {
        return 0;
    }
    for (std::size_t index = 1; index < length; ++index) {
        if ((byte(index) & 0xC0) != 0x80) {
            return 0;
        }
    }
    const unsigned char second = byte(1);
    const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool surrogate = first == 0xED && second >= 0xA0;
    const bool tooLarge = first == 0xF4 && second >= 0x90;
    return overlong || surrogate || tooLarge ? 0 : length;
}

} // namespace

std::string decodeFormText(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t position = 0; position < text.size(); ++position) {
        const char character = text[position];
        if (character == '%' && position + 2 < text.size()) {
            const int high = hexadecimalDigit(text[position + 1]);
            const int low = hexadecimalDigit(text[position + 2]);
            if (high >= 0 && low >= 0) {
                decoded.push_back(static_cast<char>(high * 16 + low));
                position += 2;
                continue;
            }
        }
        decoded.push_back(character == '+' ? ' ' : character);
    }
    return decoded;
}

void Parameters::read(std::string_view text) {
    while (!text.empty()) {
        const std::string_view item = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(text.size(), item.size() + 1));
        if (item.empty()) {
            continue;
        }
        const std::size_t equals = item.find('=');
        const std::string_view name = item.substr(0, equals);
        const std::string_view value =
            equals == std::string_view::npos ? std::string_view() : item.substr(equals + 1);
        items_.emplace_back(decodeFormText(name), decodeFormText(value));
    }
}

std::optional<std::string> Parameters::value(std::string_view name) const {
    const auto found =
        std::find_if(items_.begin(), items_.end(), [&](const auto& item) { return item.first == name; });
    if (found == items_.end()) {
        return std::nullopt;
    }
    return found->second;
}

bool isText(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t length = characterLength(bytes);
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
    return true;
}

bool Parameters::areText() const {
    return std::all_of(items_.begin(), items_.end(),
                       [](const auto& item) { return isText(item.first) && isText(item.second); });
}

} // namespace teralune::service
