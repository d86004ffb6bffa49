#include "Platform/Http/CurlHeaderLines.h"

#include "Platform/Foundation/AsciiText.h"

#include <curl/curl.h>

#include <algorithm>

namespace teralune {

CurlHeaderLines::CurlHeaderLines() = default;
CurlHeaderLines::~CurlHeaderLines() = default;

void CurlHeaderLines::make(const URLRequest& request) {
    text_.clear();
    // Without its "Expect" a large form would wait a second for a server that never answers it.
    addLine("Expect:");
    bool hasCookie = false;
    bool hasContentType = false;
    for (const auto& [name, value] : request.headers) {
        const bool isCookie = equalsIgnoringCase(name, "Cookie");
        hasCookie = hasCookie || isCookie;
        hasContentType = hasContentType || equalsIgnoringCase(name, "Content-Type");
        if (!isCookie) {
            addField(name, value);
        }
    }
    if (hasCookie) {
        addField("Cookie", *request.headers.value("Cookie"));
    }
    if (!hasContentType && request.body.index() < 2) {
        addLine("Content-Type:");
    }

    nodes_.resize(static_cast<std::size_t>(std::count(text_.begin(), text_.end(), '\0')));
    char* line = text_.data();
    for (std::size_t index = 0; index < nodes_.size(); ++index) {
        nodes_[index] = {line, index + 1 < nodes_.size() ? &nodes_[index + 1] : nullptr};
        line += std::char_traits<char>::length(line) + 1;
    }
}

curl_slist* CurlHeaderLines::list() {
    return nodes_.data();
}

void CurlHeaderLines::addField(std::string_view name, std::string_view value) {
    text_.append(name);
    if (trimmed(value).empty()) {
        addLine(";");
    } else {
        text_.append(": ");
        addLine(value);
    }
}

void CurlHeaderLines::addLine(std::string_view line) {
    text_.append(line).push_back('\0');
}

} // namespace teralune
