#include "Platform/Http/ResponseValidation.h"

#include "Platform/Foundation/AsciiText.h"
#include "Platform/Http/ContentType.h"
#include "Platform/Http/HttpError.h"

#include <string>
#include <string_view>

namespace teralune {

namespace {

/// One element of an Accept header.
struct MediaRange {
    std::string type;
    bool isRefused = false; ///< its weight is nought
};

bool isNought(std::string_view weight) {
    return !weight.empty() && weight.front() == '0' &&
           weight.find_first_not_of("0.") == std::string_view::npos;
}

MediaRange parseRange(std::string_view element) {
    const auto pieces = splitList(element, ';');
    MediaRange range{lowercased(pieces.front()), false};
    for (const std::string_view parameter : pieces) {
        if (parameter.size() > 2 && equalsIgnoringCase(parameter.substr(0, 2), "q=")) {
            range.isRefused = isNought(trimmed(parameter.substr(2)));
        }
    }
    return range;
}

enum class Match { none, anything, anySubtype, exact };

/// A reply without a type is matched by the range that matches anything alone.
Match match(std::string_view range, const std::optional<std::string>& type) {
    if (range == "*/*" || range == "*") {
        return Match::anything;
    }
    if (!type) {
        return Match::none;
    }
    if (range == *type) {
        return Match::exact;
    }
    const bool coversSubtypes = range.ends_with("/*") && type->starts_with(range.substr(0, range.size() - 1));
    return coversSubtypes ? Match::anySubtype : Match::none;
}

bool admits(std::string_view accept, const std::optional<std::string>& type) {
    Match best = Match::none;
    bool isAdmitted = false;
    for (const std::string_view element : splitList(accept, ',')) {
        const MediaRange range = parseRange(element);
        const Match found = match(range.type, type);
        if (found > best) {
            best = found;
            isAdmitted = !range.isRefused;
        }
    }
    return isAdmitted;
}

} // namespace

std::optional<Error> validationError(const URLRequest& request, const HTTPURLResponse& response,
                                     std::size_t bodySize) {
    if (response.statusCode < 200 || response.statusCode > 299) {
        return responseValidationError(ResponseValidationError::unacceptableStatusCode,
                                       std::to_string(response.statusCode));
    }
    const auto accept = request.headers.value("Accept");
    if (bodySize == 0 || !accept) {
        return std::nullopt;
    }
    const auto type = mimeType(response);
    if (admits(*accept, type)) {
        return std::nullopt;
    }
    return type ? responseValidationError(ResponseValidationError::unacceptableContentType, *type)
                : responseValidationError(ResponseValidationError::missingContentType);
}

} // namespace teralune
