#include "Platform/Http/CurlExchange.h"

#include "Platform/Foundation/AsciiText.h"
#include "Platform/Http/CurlError.h"
#include "Platform/Http/HeaderSafety.h"
#include "Platform/Http/HttpError.h"
#include "Platform/Http/MultipartFormData.h"
#include "Platform/Http/Redirect.h"
#include "Platform/Http/Url.h"

#include <curl/curl.h>

namespace teralune {

namespace {

static_assert(CURL_ERROR_SIZE <= 256);

void freeList(void* list) {
    curl_slist_free_all(static_cast<curl_slist*>(list));
}

void freeForm(void* form) {
    curl_mime_free(static_cast<curl_mime*>(form));
}

/// As libcurl wants it: a field without a value is written with a semicolon, or it would be left out.
std::string line(const std::string& name, const std::string& value) {
    return trimmed(value).empty() ? name + ";" : name + ": " + value;
}

} // namespace

CurlExchange::CurlExchange(const CurlTransport::Limits& limits, URLRequest request, TransferLane lane)
    : limits_(limits)
    , request_(std::move(request))
    , lane_(lane)
    , reply_(limits.headerBytes, limits.bodyBytes)
    , headerList_(nullptr, &freeList)
    , form_(nullptr, &freeForm) {}

std::optional<Error> CurlExchange::prepare(void* easy) {
    const auto url = Url::parse(request_.url);
    if (!url) {
        return httpTransportError(HttpTransportError::badURL);
    }
    if (!url->isHttp()) {
        return httpTransportError(HttpTransportError::unsupportedURL, url->scheme());
    }
    if (auto error = unsafeHeaderError(request_)) {
        return error;
    }
    curl_easy_setopt(easy, CURLOPT_URL, request_.url.c_str());
    setConnection(easy, url->isLoopback());
    setHeaders(easy);
    return setBody(easy);
}

void CurlExchange::setConnection(void* easy, bool isLoopback) {
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits_.connectTimeout.count()));
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_TIME, static_cast<long>(limits_.idleTimeout.count()));
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &onBytes<&ReplyCollector::addHeaderLine>);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &onBytes<&ReplyCollector::addBody>);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, words_.data());
    if (isLoopback) {
        // A proxy named in the environment has no business between a process and its own machine.
        curl_easy_setopt(easy, CURLOPT_PROXY, "");
    }
    if (lane_ == TransferLane::control) {
        // On a connection that the server has just closed libcurl sends a request twice by itself; a token
        // must not be refreshed twice.
        curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, 1L);
        // Everyone waits for its end, which a server that sends a byte now and then would put off for ever.
        curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(limits_.controlTimeout.count()));
    }
}

void CurlExchange::setHeaders(void* easy) {
    // Without its "Expect" a large form would wait a second for a server that never answers it.
    curl_slist* list = curl_slist_append(nullptr, "Expect:");
    for (const auto& [name, value] : request_.headers) {
        if (!equalsIgnoringCase(name, "Cookie")) {
            list = curl_slist_append(list, line(name, value).c_str());
        }
    }
    if (const auto cookies = request_.headers.value("Cookie")) {
        list = curl_slist_append(list, line("Cookie", *cookies).c_str());
    }
    if (!request_.headers.contains("Content-Type") && request_.body.index() < 2) {
        list = curl_slist_append(list, "Content-Type:");
    }
    headerList_.reset(list);
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, list);
    curl_easy_setopt(easy, CURLOPT_HEADEROPT, static_cast<long>(CURLHEADER_SEPARATE));
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
}

std::optional<Error> CurlExchange::setBody(void* easy) {
    const HttpMethod method = request_.method;
    if (const auto* form = std::get_if<std::shared_ptr<const MultipartFormData>>(&request_.body)) {
        if (auto error = setForm(easy, **form)) {
            return error;
        }
    } else if (const auto* text = std::get_if<std::shared_ptr<const std::string>>(&request_.body)) {
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, (*text)->data());
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>((*text)->size()));
    } else if (method == HttpMethod::head) {
        curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
        return std::nullopt;
    } else if (method == HttpMethod::get) {
        return std::nullopt;
    } else if (method != HttpMethod::del) {
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, "");
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t{0});
    }
    if (method != HttpMethod::post) {
        curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, name(method).data());
    }
    return std::nullopt;
}

std::optional<Error> CurlExchange::setForm(void* easy, const MultipartFormData& form) {
    curl_mime* const mime = curl_mime_init(easy);
    form_.reset(mime);
    for (const MultipartFormData::Part& part : form.parts()) {
        curl_mimepart* const added = curl_mime_addpart(mime);
        curl_mime_name(added, part.name.c_str());
        if (const auto* path = std::get_if<std::filesystem::path>(&part.content)) {
            std::error_code ignored;
            if (!std::filesystem::is_regular_file(*path, ignored) ||
                curl_mime_filedata(added, path->c_str()) != CURLE_OK) {
                return httpTransportError(HttpTransportError::fileDoesNotExist, path->filename().string());
            }
        } else {
            const auto& bytes = std::get<std::string>(part.content);
            curl_mime_data(added, bytes.data(), bytes.size());
        }
        curl_mime_filename(added, part.fileName.empty() ? nullptr : part.fileName.c_str());
        curl_mime_type(added, part.mimeType.empty() ? nullptr : part.mimeType.c_str());
    }
    curl_easy_setopt(easy, CURLOPT_MIMEPOST, mime);
    return std::nullopt;
}

CurlExchange::Next CurlExchange::end(void* easy, int code) {
    if (code != CURLE_OK) {
        outcome_ = failed(failure(easy, code));
        return Next::finished;
    }
    if (auto fault = reply_.fault()) {
        outcome_ = failed(*std::move(fault));
        return Next::finished;
    }
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    HTTPURLResponse response{request_.url, static_cast<int>(status), reply_.takeHeaders()};
    if (!isRedirect(response)) {
        outcome_ = {std::move(response), reply_.takeBody(), std::nullopt};
        return Next::finished;
    }
    if (redirects_++ == limits_.redirects) {
        outcome_ = failed(httpTransportError(HttpTransportError::httpTooManyRedirects));
        return Next::finished;
    }
    auto following = followingRequest(request_, response);
    if (!following) {
        outcome_ = failed(following.error());
        return Next::finished;
    }
    request_ = std::move(following).value();
    reply_ = ReplyCollector(limits_.headerBytes, limits_.bodyBytes);
    return Next::follow;
}

Error CurlExchange::failure(void* easy, int code) const {
    if (reply_.isTooLong()) {
        return httpTransportError(HttpTransportError::dataLengthExceedsMaximum);
    }
    long systemError = 0;
    curl_easy_getinfo(easy, CURLINFO_OS_ERRNO, &systemError);
    return errorForCurlCode(code, static_cast<int>(systemError), words_.data());
}

template<bool (ReplyCollector::*take)(std::string_view)>
std::size_t CurlExchange::onBytes(char* data, std::size_t size, std::size_t count, void* exchange) noexcept {
    constexpr std::size_t refused = 0;
    try {
        const std::string_view bytes(data, size * count);
        return (static_cast<CurlExchange*>(exchange)->reply_.*take)(bytes) ? bytes.size() : refused;
    } catch (...) {
        return refused;
    }
}

} // namespace teralune
