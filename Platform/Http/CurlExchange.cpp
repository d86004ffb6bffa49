#include "Platform/Http/CurlExchange.h"

#include "Platform/Http/CurlError.h"
#include "Platform/Http/CurlHandle.h"
#include "Platform/Http/HeaderSafety.h"
#include "Platform/Http/HttpError.h"
#include "Platform/Http/MultipartFormData.h"
#include "Platform/Http/Redirect.h"
#include "Platform/Http/Url.h"

#include <curl/curl.h>

namespace teralune {

namespace {

void freeForm(void* form) {
    curl_mime_free(static_cast<curl_mime*>(form));
}

void freeUrl(void* url) {
    curl_url_cleanup(static_cast<CURLU*>(url));
}

} // namespace

CurlExchange::CurlExchange(const CurlTransport::Limits& limits, URLRequest request, TransferLane lane)
    : limits_(limits)
    , request_(std::move(request))
    , lane_(lane)
    , url_(nullptr, &freeUrl)
    , reply_(limits.headerBytes, limits.bodyBytes)
    , form_(nullptr, &freeForm) {
    inspect();
}

void CurlExchange::inspect() {
    const auto url = Url::parse(request_.url);
    if (!url) {
        refusal_ = httpTransportError(HttpTransportError::badURL);
    } else if (!url->isHttp()) {
        refusal_ = httpTransportError(HttpTransportError::unsupportedURL, url->scheme());
    } else if (refusal_ = unsafeHeaderError(request_); !refusal_) {
        isLoopback_ = url->isLoopback();
        headerLines_.make(request_);
        takeApart(request_.url);
    }
}

/// Read here, the URL costs the sender's thread what it would cost the engine's, which every request shares.
void CurlExchange::takeApart(const std::string& url) {
    CURLU* const parts = curl_url();
    url_.reset(parts);
    if (parts && curl_url_set(parts, CURLUPART_URL, url.c_str(), CURLU_PATH_AS_IS) != CURLUE_OK) {
        url_.reset();
    }
}

std::optional<Error> CurlExchange::prepare(CurlHandle& handle) {
    if (refusal_) {
        return refusal_;
    }
    handle.attach(*this);
    handle.setProxy(isLoopback_ ? CurlHandle::Proxy::none : CurlHandle::Proxy::fromEnvironment);
    // The text serves where there was no memory to take it apart.
    curl_easy_setopt(handle.easy(), CURLOPT_URL, request_.url.c_str());
    curl_easy_setopt(handle.easy(), CURLOPT_CURLU, url_.get());
    curl_easy_setopt(handle.easy(), CURLOPT_HTTPHEADER, headerLines_.list());
    if (lane_ == TransferLane::control) {
        handle.markSpecial();
        // On a connection that the server has just closed libcurl sends a request twice by itself; a token
        // must not be refreshed twice.
        curl_easy_setopt(handle.easy(), CURLOPT_FRESH_CONNECT, 1L);
        // Nobody else needs that connection, and each refresh would leave one more behind.
        curl_easy_setopt(handle.easy(), CURLOPT_FORBID_REUSE, 1L);
        // Everyone waits for its end, which a server that sends a byte now and then would put off for ever.
        curl_easy_setopt(handle.easy(), CURLOPT_TIMEOUT_MS,
                         static_cast<long>(limits_.controlTimeout.count()));
    }
    if (request_.method != HttpMethod::get || request_.body.index() != 0) {
        handle.markSpecial();
        return setBody(handle);
    }
    return std::nullopt;
}

std::optional<Error> CurlExchange::setBody(CurlHandle& handle) {
    void* const easy = handle.easy();
    const HttpMethod method = request_.method;
    if (const auto* form = std::get_if<std::shared_ptr<const MultipartFormData>>(&request_.body)) {
        if (auto error = setForm(handle, **form)) {
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

std::optional<Error> CurlExchange::setForm(CurlHandle& handle, const MultipartFormData& form) {
    curl_mime* const mime = curl_mime_init(handle.easy());
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
    curl_easy_setopt(handle.easy(), CURLOPT_MIMEPOST, mime);
    return std::nullopt;
}

CurlExchange::Next CurlExchange::end(const CurlHandle& handle, int code) {
    if (code != CURLE_OK) {
        outcome_ = failed(failure(handle, code));
        return Next::finished;
    }
    if (auto fault = reply_.fault()) {
        outcome_ = failed(*std::move(fault));
        return Next::finished;
    }
    long status = 0;
    curl_easy_getinfo(handle.easy(), CURLINFO_RESPONSE_CODE, &status);
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
    inspect();
    return Next::follow;
}

Error CurlExchange::failure(const CurlHandle& handle, int code) const {
    if (reply_.isTooLong()) {
        return httpTransportError(HttpTransportError::dataLengthExceedsMaximum);
    }
    long systemError = 0;
    curl_easy_getinfo(handle.easy(), CURLINFO_OS_ERRNO, &systemError);
    return errorForCurlCode(code, static_cast<int>(systemError), handle.words());
}

} // namespace teralune
