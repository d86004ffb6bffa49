#include "Platform/Http/Url.h"

#include "Platform/Foundation/AsciiText.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>

namespace teralune {

namespace {

using Handle = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

Handle makeHandle() {
    return {curl_url(), &curl_url_cleanup};
}

constexpr std::array<bool, 256> urlBytes = [] {
    constexpr std::string_view excluded = "\"<>\\^`{|}";
    std::array<bool, 256> bytes{};
    for (std::size_t byte = 0x21; byte < 0x7f; ++byte) {
        bytes[byte] = excluded.find(static_cast<char>(byte)) == std::string_view::npos;
    }
    return bytes;
}();

bool holdsOnlyURLCharacters(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return urlBytes[static_cast<unsigned char>(character)]; });
}

std::string part(CURLU* handle, CURLUPart which, unsigned flags = 0) {
    char* value = nullptr;
    if (curl_url_get(handle, which, &value, flags) != CURLUE_OK) {
        return {};
    }
    std::string copy(value);
    curl_free(value);
    return copy;
}

bool isLowercaseLetter(char character) {
    return character >= 'a' && character <= 'z';
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

std::size_t authorityLength(std::string_view text) {
    const auto end = std::find_if(text.begin(), text.end(), [](char character) {
        return character == '/' || character == '?' || character == '#';
    });
    return static_cast<std::size_t>(end - text.begin());
}

/// A name in lower case of which some label begins with a letter, so that it can't be another way to write an
/// address, or 127.0.0.1.
bool isOrdinaryHost(std::string_view host) {
    bool hasName = false;
    char before = '.';
    for (const char character : host) {
        if (character == '.' ? before == '.'
                             : !isLowercaseLetter(character) && !isDigit(character) &&
                                   (character != '-' || before == '.')) {
            return false;
        }
        hasName = hasName || (before == '.' && isLowercaseLetter(character));
        before = character;
    }
    return (hasName && before != '.') || host == "127.0.0.1";
}

} // namespace

/// Every request of an app has a URL of this shape, for which libcurl's parser would do a hundred times the
/// work with the same result. What is unusual in any way is left to that parser.
std::optional<Url> Url::parseOrdinary(std::string_view text) {
    Url url;
    url.scheme_ = text.starts_with("https://") ? "https" : "http";
    const std::size_t authority = url.scheme_.size() + 3;
    if (!text.starts_with(url.scheme_ + "://") || text.find("/.", authority) != std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t path = authority + authorityLength(text.substr(authority));
    const std::size_t colon = std::min(text.find(':', authority), path);
    const std::string_view port = text.substr(colon, path - colon);
    url.port_ = url.isSecure() ? 443 : 80;
    if (!port.empty()) {
        const auto [end, error] = std::from_chars(port.data() + 1, port.data() + port.size(), url.port_);
        if (error != std::errc() || end != port.data() + port.size() || url.port_ == 0) {
            return std::nullopt;
        }
    }
    url.host_ = text.substr(authority, colon - authority);
    if (!isOrdinaryHost(url.host_)) {
        return std::nullopt;
    }
    const std::string_view rest = text.substr(path);
    url.path_ = rest.substr(0, std::min(rest.find('?'), rest.find('#')));
    if (url.path_.empty()) {
        url.path_ = "/";
    }
    url.text_ = text;
    return url;
}

std::optional<Url> Url::parse(std::string_view text) {
    if (!holdsOnlyURLCharacters(text)) {
        return std::nullopt;
    }
    if (auto ordinary = parseOrdinary(text)) {
        return ordinary;
    }
    Url url;
    url.text_ = text;
    const Handle handle = makeHandle();
    if (!handle ||
        curl_url_set(handle.get(), CURLUPART_URL, url.text_.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
        return std::nullopt;
    }
    url.scheme_ = lowercased(part(handle.get(), CURLUPART_SCHEME));
    url.host_ = lowercased(part(handle.get(), CURLUPART_HOST));
    url.path_ = part(handle.get(), CURLUPART_PATH);
    const std::string port = part(handle.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
    std::from_chars(port.data(), port.data() + port.size(), url.port_);
    if (url.isHttp() && (url.host_.empty() || url.port_ == 0)) {
        return std::nullopt;
    }
    return url;
}

bool Url::isLoopback() const {
    return host_ == "localhost" || host_ == "[::1]" ||
           (host_.starts_with("127.") && host_.find_first_not_of("0123456789.") == std::string::npos);
}

bool Url::hasSameOrigin(const Url& other) const {
    return scheme_ == other.scheme_ && host_ == other.host_ && port_ == other.port_;
}

std::optional<Url> Url::resolve(std::string_view reference) const {
    const Handle handle = makeHandle();
    constexpr unsigned flags = CURLU_NON_SUPPORT_SCHEME | CURLU_URLENCODE | CURLU_DISALLOW_USER;
    if (!handle || curl_url_set(handle.get(), CURLUPART_URL, text_.c_str(), CURLU_NON_SUPPORT_SCHEME) ||
        curl_url_set(handle.get(), CURLUPART_URL, std::string(reference).c_str(), flags)) {
        return std::nullopt;
    }
    return parse(part(handle.get(), CURLUPART_URL));
}

} // namespace teralune
