#include "Platform/Http/CurlHeaderLines.h"

#include "Platform/Foundation/AsciiText.h"

#include <curl/curl.h>

namespace teralune {

CurlHeaderLines::CurlHeaderLines() = default;
CurlHeaderLines::~CurlHeaderLines() = default;

void CurlHeaderLines::make(const URLRequest& request) {
    reserve(request.headers);
    // Without its "Expect" a large form would wait a second for a server that never answers it.
    addLine({"Expect:"});
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
        addLine({"Content-Type:"});
    }
}

/// The nodes point into the text and at each other, so neither may move.
void CurlHeaderLines::reserve(const HttpHeaders& headers) {
    constexpr std::string_view ownLines = "Expect: Content-Type: ";
    std::size_t size = ownLines.size();
    for (const auto& [name, value] : headers) {
        size += name.size() + std::string_view(": ;").size() + value.size();
    }
    text_.clear();
    text_.reserve(size);
    nodes_.clear();
    nodes_.reserve(headers.size() + 2);
}

curl_slist* CurlHeaderLines::list() {
    return nodes_.data();
}

void CurlHeaderLines::addField(std::string_view name, std::string_view value) {
    if (trimmed(value).empty()) {
        addLine({name, ";"});
    } else {
        addLine({name, ": ", value});
    }
}

void CurlHeaderLines::addLine(std::initializer_list<std::string_view> pieces) {
    char* const line = text_.data() + text_.size();
    for (const std::string_view piece : pieces) {
        text_.append(piece);
    }
    text_.push_back('\0');
    if (!nodes_.empty()) {
        nodes_.back().next = nodes_.data() + nodes_.size();
    }
    nodes_.push_back({line, nullptr});
}

} // namespace teralune
