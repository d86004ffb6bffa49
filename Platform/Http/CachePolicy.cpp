#include "Platform/Http/CachePolicy.h"

#include "Platform/Foundation/AsciiText.h"

#include <algorithm>
#include <string_view>

namespace teralune {

namespace {

constexpr std::size_t largestStoredBody = 20 * 1024 * 1024 / 20;

/// Whether a list header has the element, whatever follows an "=" in it.
bool hasElement(const HttpHeaders& headers, std::string_view header, std::string_view element) {
    const std::string list = headers.value(header).value_or("");
    const auto elements = splitList(list, ',');
    return std::any_of(elements.begin(), elements.end(), [element](std::string_view candidate) {
        return equalsIgnoringCase(trimmed(candidate.substr(0, candidate.find('='))), element);
    });
}

bool isCacheableByItself(int status) {
    return status == 200 || status == 203 || status == 204;
}

bool hasLifetime(const HttpHeaders& headers) {
    return headers.contains("Expires") || hasElement(headers, "Cache-Control", "max-age") ||
           hasElement(headers, "Cache-Control", "public") || hasElement(headers, "Cache-Control", "private");
}

} // namespace

bool wouldBeStoredInCache(const URLRequest& request, const HTTPURLResponse& response, std::size_t bodySize) {
    const int status = response.statusCode;
    return request.method == HttpMethod::get && status >= 200 && status <= 299 && status != 206 &&
           bodySize <= largestStoredBody && !hasElement(request.headers, "Cache-Control", "no-store") &&
           !hasElement(response.headers, "Cache-Control", "no-store") &&
           !hasElement(response.headers, "Vary", "*") &&
           (isCacheableByItself(status) || hasLifetime(response.headers));
}

} // namespace teralune
