#include "Platform/Http/CurlHandle.h"

#include "Platform/Http/CurlExchange.h"
#include "Platform/Http/CurlWatch.h"

#include <curl/curl.h>

namespace teralune {

CurlHandle::CurlHandle(const CurlTransport::Limits& limits, CurlWatch& watch)
    : limits_(limits)
    , watch_(watch)
    , easy_(curl_easy_init()) {
    if (easy_) {
        setSharedOptions();
    }
}

CurlHandle::~CurlHandle() {
    curl_easy_cleanup(easy_);
}

CurlHandle& CurlHandle::of(void* easy) {
    CurlHandle* handle = nullptr;
    curl_easy_getinfo(easy, CURLINFO_PRIVATE, &handle);
    return *handle;
}

void CurlHandle::release() {
    exchange_ = nullptr;
    if (isSpecial_) {
        curl_easy_reset(easy_);
        setSharedOptions();
    } else {
        curl_easy_setopt(easy_, CURLOPT_HTTPHEADER, nullptr);
        curl_easy_setopt(easy_, CURLOPT_CURLU, nullptr);
    }
}

void CurlHandle::setProxy(Proxy proxy) {
    if (proxy_ != proxy) {
        proxy_ = proxy;
        curl_easy_setopt(easy_, CURLOPT_PROXY, proxy == Proxy::none ? "" : nullptr);
    }
}

void CurlHandle::setSharedOptions() {
    static_assert(CURL_ERROR_SIZE <= std::tuple_size_v<decltype(words_)>);
    isSpecial_ = false;
    proxy_ = Proxy::fromEnvironment;
    curl_easy_setopt(easy_, CURLOPT_PRIVATE, this);
    watch_.adopt(easy_);
    curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy_, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(easy_, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy_, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy_, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    curl_easy_setopt(easy_, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(easy_, CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
    curl_easy_setopt(easy_, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits_.connectTimeout.count()));
    curl_easy_setopt(easy_, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(easy_, CURLOPT_LOW_SPEED_TIME, static_cast<long>(limits_.idleTimeout.count()));
    curl_easy_setopt(easy_, CURLOPT_HEADEROPT, static_cast<long>(CURLHEADER_SEPARATE));
    curl_easy_setopt(easy_, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(easy_, CURLOPT_HEADERFUNCTION, &onBytes<&CurlExchange::addHeaderLine>);
    curl_easy_setopt(easy_, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &onBytes<&CurlExchange::addBody>);
    curl_easy_setopt(easy_, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy_, CURLOPT_ERRORBUFFER, words_.data());
}

template<auto take>
std::size_t CurlHandle::onBytes(char* data, std::size_t size, std::size_t count, void* handle) noexcept {
    constexpr std::size_t refused = 0;
    try {
        const std::string_view bytes(data, size * count);
        CurlExchange* const exchange = static_cast<CurlHandle*>(handle)->exchange_;
        return exchange && (exchange->*take)(bytes) ? bytes.size() : refused;
    } catch (...) {
        return refused;
    }
}

} // namespace teralune
