#include "Platform/Foundation/AsciiText.h"

#include <algorithm>

namespace teralune {

namespace {

char lowercased(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

} // namespace

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lowercased(a) == lowercased(b); });
}

std::string lowercased(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char c) { return lowercased(c); });
    return result;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::vector<std::string_view> splitList(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    bool isQuoted = false;
    std::size_t begin = 0;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '"') {
            isQuoted = !isQuoted;
        } else if (isQuoted && text[index] == '\\') {
            ++index;
        } else if (!isQuoted && text[index] == separator) {
            pieces.push_back(trimmed(text.substr(begin, index - begin)));
            begin = index + 1;
        }
    }
    pieces.push_back(trimmed(text.substr(begin)));
    return pieces;
}

} // namespace teralune
