#include "Platform/Http/ContentType.h"

#include "Platform/Foundation/AsciiText.h"

namespace teralune {

namespace {

std::string_view unquoted(std::string_view text) {
    const bool isQuoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return isQuoted ? text.substr(1, text.size() - 2) : text;
}

} // namespace

std::optional<std::string> mimeType(const HTTPURLResponse& response) {
    const auto header = response.headers.value("Content-Type");
    if (!header) {
        return std::nullopt;
    }
    const std::string_view type = splitList(*header, ';').front();
    const std::size_t slash = type.find('/');
    if (slash == std::string_view::npos || slash == 0 || slash + 1 == type.size()) {
        return std::nullopt;
    }
    return lowercased(type);
}

std::optional<std::string> charset(const HTTPURLResponse& response) {
    const auto header = response.headers.value("Content-Type");
    if (!header) {
        return std::nullopt;
    }
    for (const std::string_view parameter : splitList(*header, ';')) {
        const std::size_t equals = parameter.find('=');
        if (equals != std::string_view::npos &&
            equalsIgnoringCase(trimmed(parameter.substr(0, equals)), "charset")) {
            return lowercased(unquoted(trimmed(parameter.substr(equals + 1))));
        }
    }
    return std::nullopt;
}

} // namespace teralune
