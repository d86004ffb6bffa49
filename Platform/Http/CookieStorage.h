#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace teralune {

/// The cookies that a host keeps for its pages, in memory. Requests of session managers neither read nor fill
/// it: their identity travels in the Cookie header that the adapter writes. Usable from any thread.
class CookieStorage {
public:
    struct Cookie {
        std::string name;
        std::string value;
        std::string domain; ///< without a leading dot
        std::string path;
        bool hostOnly = true;
        bool secure = false;
    };

    void set(Cookie cookie);
    /// Those that would be sent with a request for the URL: by domain, path and scheme (RFC 6265, 5.4).
    std::vector<Cookie> cookies(std::string_view url) const;
    /// Deletes each of them.
    void removeCookies(std::string_view url);

private:
    mutable std::mutex mutex_;
    std::vector<Cookie> cookies_;
};

} // namespace teralune
