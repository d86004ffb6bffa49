#include "Platform/Http/ReplyCollector.h"

#include "Platform/Foundation/AsciiText.h"

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
