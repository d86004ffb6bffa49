#include "Platform/Http/Url.h"

#include "Platform/Foundation/AsciiText.h"

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <memory>

namespace teralune {

namespace {

using Handle = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

Handle makeHandle() {
    return {curl_url(), &curl_url_cleanup};
}

bool holdsOnlyURLCharacters(std::string_view text) {
    constexpr std::string_view excluded = "\"<>\\^`{|}";
    return std::all_of(text.begin(), text.end(), [excluded](char character) {
        return character > 0x20 && character < 0x7f && excluded.find(character) == std::string_view::npos;
    });
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

} // namespace

std::optional<Url> Url::parse(std::string_view text) {
    if (!holdsOnlyURLCharacters(text)) {
        return std::nullopt;
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
