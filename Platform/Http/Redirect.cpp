#include "Platform/Http/Redirect.h"

#include "Platform/Foundation/AsciiText.h"
#include "Platform/Http/HttpError.h"
#include "Platform/Http/Url.h"

#include <algorithm>

namespace teralune {

namespace {

/// A list of what may pass, not of what may not: an adapter's headers are secrets until proven otherwise.
HttpHeaders impersonal(const HttpHeaders& headers) {
    constexpr std::string_view passing[] = {"Accept", "Accept-Encoding", "Accept-Language", "Content-Type",
                                            "User-Agent"};
    HttpHeaders kept;
    for (const auto& [name, value] : headers) {
        if (std::any_of(std::begin(passing), std::end(passing),
                        [&name = name](std::string_view safe) { return equalsIgnoringCase(name, safe); })) {
            kept.add(name, value);
        }
    }
    return kept;
}

bool becomesGet(HttpMethod method, int status) {
    if (status == 303) {
        return method != HttpMethod::head && method != HttpMethod::get;
    }
    return (status == 301 || status == 302) && method == HttpMethod::post;
}

} // namespace

bool isRedirect(const HTTPURLResponse& response) {
    constexpr int statuses[] = {301, 302, 303, 307, 308};
    return std::find(std::begin(statuses), std::end(statuses), response.statusCode) != std::end(statuses) &&
           response.headers.contains("Location");
}

Result<URLRequest> followingRequest(const URLRequest& request, const HTTPURLResponse& response) {
    const auto from = Url::parse(request.url);
    const auto to = from ? from->resolve(response.headers.value("Location").value_or("")) : std::nullopt;
    if (!to) {
        return httpTransportError(HttpTransportError::redirectToNonExistentLocation);
    }
    if (!to->isHttp()) {
        return httpTransportError(HttpTransportError::unsupportedURL, to->scheme());
    }
    if (from->isSecure() && !to->isSecure()) {
        return httpTransportError(HttpTransportError::redirectToNonExistentLocation, "from https to http");
    }
    const bool isElsewhere = !from->hasSameOrigin(*to);
    if (isElsewhere && request.body.index() != 0 && !becomesGet(request.method, response.statusCode)) {
        return httpTransportError(HttpTransportError::redirectToNonExistentLocation,
                                  "with a body to another origin");
    }
    URLRequest following = request;
    following.url = to->text();
    if (isElsewhere) {
        following.headers = impersonal(request.headers);
    }
    if (becomesGet(request.method, response.statusCode)) {
        following.method = HttpMethod::get;
        following.body = {};
        following.headers.remove("Content-Type");
    }
    return following;
}

} // namespace teralune
