#include "Platform/Http/ReplyCollector.h"

#include "Platform/Foundation/AsciiText.h"
#include "Platform/Http/HttpError.h"

#include <algorithm>

namespace teralune {

bool ReplyCollector::addHeaderLine(std::string_view line) {
    headerBytes_ += line.size();
    if (headerBytes_ > headerLimit_) {
        isTooLong_ = true;
        return false;
    }
    line = line.substr(0, line.find_last_not_of("\r\n") + 1);
    if (line.starts_with("HTTP/") && (isHeadComplete_ || headers_.size() == 0)) {
        headers_ = {};
        isHeadComplete_ = false;
    } else if (line.empty()) {
        isHeadComplete_ = true;
    } else if (!isHeadComplete_) {
        addField(line);
    }
    return true;
}

std::optional<Error> ReplyCollector::fault() const {
    if (!isHeadComplete_) {
        return httpTransportError(HttpTransportError::networkConnectionLost, "in the head of the reply");
    }
    const std::string length = headers_.value("Content-Length").value_or("");
    const auto lengths = splitList(length, ',');
    const auto differs = [&lengths](std::string_view one) { return one != lengths.front(); };
    if (!headers_.contains("Transfer-Encoding") && std::any_of(lengths.begin(), lengths.end(), differs)) {
        return httpTransportError(HttpTransportError::cannotParseResponse, "two lengths");
    }
    return std::nullopt;
}

/// libcurl unfolds no line: one that begins with a blank goes on with the field before it.
void ReplyCollector::addField(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (line.front() == ' ' || line.front() == '\t') {
        if (headers_.size() > 0) {
            headers_.appendToLast(" ");
            headers_.appendToLast(trimmed(line));
        }
    } else if (colon != std::string_view::npos) {
        headers_.add(std::string(trimmed(line.substr(0, colon))),
                     std::string(trimmed(line.substr(colon + 1))));
    }
}

bool ReplyCollector::addBody(std::string_view piece) {
    if (piece.size() > bodyLimit_ - body_.size()) {
        isTooLong_ = true;
        return false;
    }
    body_.append(piece);
    return true;
}

} // namespace teralune
