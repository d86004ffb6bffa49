// Where a request goes: what is decided by our reading of a URL (same origin, no way back to http) must hold
// for the reading of the engine that connects.

#include "Fuzz/Fuzzer.h"
#include "Platform/Http/Url.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>
#include <string>

using namespace teralune;

namespace {

struct Free {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
    void operator()(char* text) const { curl_free(text); }
};

std::string part(CURLU* url, CURLUPart what) {
    char* text = nullptr;
    curl_url_get(url, what, &text, CURLU_DEFAULT_PORT);
    const std::unique_ptr<char, Free> owned(text);
    return text != nullptr ? text : "";
}

std::string lowercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char one) { return one >= 'A' && one <= 'Z' ? static_cast<char>(one + 32) : one; });
    return text;
}

/// Both go to one place, or the engine refuses to go.
void requireSamePlace(const Url& url) {
    const std::unique_ptr<CURLU, Free> engine(curl_url());
    if (curl_url_set(engine.get(), CURLUPART_URL, url.text().c_str(), CURLU_PATH_AS_IS) != CURLUE_OK) {
        return;
    }
    fuzz::require(part(engine.get(), CURLUPART_SCHEME) == url.scheme(), "the engine reads the same scheme");
    fuzz::require(lowercased(part(engine.get(), CURLUPART_HOST)) == url.host(),
                  "the engine connects to the same host");
    fuzz::require(part(engine.get(), CURLUPART_PORT) == std::to_string(url.port()),
                  "the engine connects to the same port");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    if (const auto url = Url::parse(text); url && url->isHttp()) {
        requireSamePlace(*url);
    }
    static const Url from = *Url::parse("https://api.teralune.example/a/b?c");
    if (const auto target = from.resolve(text); target && target->isHttp()) {
        requireSamePlace(*target);
        fuzz::require(Url::parse(target->text()).has_value(), "a place that was led to can be named again");
    }
    return 0;
}
