#pragma once

#include "Platform/Http/URLRequest.h"

#include <initializer_list>
#include <string>
#include <vector>

struct curl_slist;

namespace teralune {

/// A request's header as libcurl's list of lines, in two allocations. What was made for a request stays as it
/// is until the next make(); libcurl only reads it.
class CurlHeaderLines {
public:
    CurlHeaderLines();
    ~CurlHeaderLines();
    CurlHeaderLines(const CurlHeaderLines&) = delete;
    CurlHeaderLines& operator=(const CurlHeaderLines&) = delete;

    void make(const URLRequest& request);
    curl_slist* list();

private:
    /// As libcurl wants it: a field without a value is written with a semicolon, or it would be left out.
    void addField(std::string_view name, std::string_view value);
    void addLine(std::initializer_list<std::string_view> pieces);
    void reserve(const HttpHeaders& headers);

    std::string text_; ///< the lines, each with its zero
    std::vector<curl_slist> nodes_;
};

} // namespace teralune
