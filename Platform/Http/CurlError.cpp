#include "Platform/Http/CurlError.h"

#include "Platform/Http/HttpError.h"

#include <curl/curl.h>

#include <cerrno>
#include <string>

namespace teralune {

namespace {

HttpTransportError transportError(int code, int systemError) {
    switch (code) {
    case CURLE_URL_MALFORMAT:
        return HttpTransportError::badURL;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return HttpTransportError::cannotFindHost;
    case CURLE_COULDNT_CONNECT:
    case CURLE_INTERFACE_FAILED:
        return systemError == ENETUNREACH || systemError == ENETDOWN
                   ? HttpTransportError::notConnectedToInternet
                   : HttpTransportError::cannotConnectToHost;
    case CURLE_OPERATION_TIMEDOUT:
        return HttpTransportError::timedOut;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
        return HttpTransportError::networkConnectionLost;
    // The scheme was checked before: what is not supported here is the protocol of the reply.
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
        return HttpTransportError::cannotParseResponse;
    case CURLE_BAD_CONTENT_ENCODING:
        return HttpTransportError::cannotDecodeContentData;
    case CURLE_TOO_MANY_REDIRECTS:
        return HttpTransportError::httpTooManyRedirects;
    case CURLE_FILESIZE_EXCEEDED:
        return HttpTransportError::dataLengthExceedsMaximum;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_ENGINE_INITFAILED:
        return HttpTransportError::secureConnectionFailed;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return HttpTransportError::serverCertificateUntrusted;
    default:
        return HttpTransportError::unknown;
    }
}

} // namespace

Error errorForCurlCode(int code, int systemError, std::string_view words) {
    const std::string detail(words.empty() ? curl_easy_strerror(static_cast<CURLcode>(code)) : words);
    return httpTransportError(transportError(code, systemError), detail + ", code " + std::to_string(code));
}

} // namespace teralune
