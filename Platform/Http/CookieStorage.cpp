#include "Platform/Http/CookieStorage.h"

#include "Platform/Foundation/AsciiText.h"
#include "Platform/Http/Url.h"

#include <algorithm>

namespace teralune {

namespace {

bool isAddress(std::string_view host) {
    return host.starts_with('[') || host.find_first_not_of("0123456789.") == std::string_view::npos;
}

bool matchesDomain(const CookieStorage::Cookie& cookie, std::string_view host) {
    if (equalsIgnoringCase(cookie.domain, host)) {
        return true;
    }
    return !cookie.hostOnly && !cookie.domain.empty() && !isAddress(host) &&
           host.size() > cookie.domain.size() && host[host.size() - cookie.domain.size() - 1] == '.' &&
           equalsIgnoringCase(host.substr(host.size() - cookie.domain.size()), cookie.domain);
}

bool matchesPath(const CookieStorage::Cookie& cookie, std::string_view path) {
    const std::string_view prefix = cookie.path.empty() ? std::string_view("/") : cookie.path;
    return path.starts_with(prefix) &&
           (path.size() == prefix.size() || prefix.ends_with('/') || path[prefix.size()] == '/');
}

bool isSentTo(const CookieStorage::Cookie& cookie, const Url& url) {
    return matchesDomain(cookie, url.host()) && matchesPath(cookie, url.path()) &&
           (!cookie.secure || url.isSecure());
}

} // namespace

void CookieStorage::set(Cookie cookie) {
    const std::lock_guard lock(mutex_);
    std::erase_if(cookies_, [&cookie](const Cookie& kept) {
        return kept.name == cookie.name && kept.path == cookie.path &&
               equalsIgnoringCase(kept.domain, cookie.domain);
    });
    cookies_.push_back(std::move(cookie));
}

std::vector<CookieStorage::Cookie> CookieStorage::cookies(std::string_view url) const {
    std::vector<Cookie> sent;
    if (const auto parsed = Url::parse(url)) {
        const std::lock_guard lock(mutex_);
        std::copy_if(cookies_.begin(), cookies_.end(), std::back_inserter(sent),
                     [&parsed](const Cookie& cookie) { return isSentTo(cookie, *parsed); });
    }
    std::stable_sort(sent.begin(), sent.end(), [](const Cookie& left, const Cookie& right) {
        return left.path.size() > right.path.size();
    });
    return sent;
}

void CookieStorage::removeCookies(std::string_view url) {
    if (const auto parsed = Url::parse(url)) {
        const std::lock_guard lock(mutex_);
        std::erase_if(cookies_, [&parsed](const Cookie& cookie) { return isSentTo(cookie, *parsed); });
    }
}

} // namespace teralune
