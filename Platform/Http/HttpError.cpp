#include "Platform/Http/HttpError.h"

namespace teralune {

namespace {

std::string_view text(HttpTransportError code) {
    switch (code) {
    case HttpTransportError::unknown:
        break;
    case HttpTransportError::cancelled:
        return "The request was cancelled.";
    case HttpTransportError::badURL:
        return "The URL is not valid.";
    case HttpTransportError::timedOut:
        return "The request timed out.";
    case HttpTransportError::unsupportedURL:
        return "The URL's scheme is not supported.";
    case HttpTransportError::cannotFindHost:
        return "The server's name could not be found.";
    case HttpTransportError::cannotConnectToHost:
        return "The server could not be reached.";
    case HttpTransportError::networkConnectionLost:
        return "The connection to the server was lost.";
    case HttpTransportError::httpTooManyRedirects:
        return "The server redirected too many times.";
    case HttpTransportError::notConnectedToInternet:
        return "There is no connection to the Internet.";
    case HttpTransportError::redirectToNonExistentLocation:
        return "The server redirected to a place that can't be followed.";
    case HttpTransportError::badServerResponse:
        return "The server's reply is not acceptable.";
    case HttpTransportError::cannotDecodeContentData:
        return "The server's reply could not be decoded.";
    case HttpTransportError::cannotParseResponse:
        return "The server's reply could not be read.";
    case HttpTransportError::dataLengthExceedsMaximum:
        return "The server's reply is too long.";
    case HttpTransportError::fileDoesNotExist:
        return "A file that was to be sent does not exist.";
    case HttpTransportError::secureConnectionFailed:
        return "A secure connection to the server could not be made.";
    case HttpTransportError::serverCertificateUntrusted:
        return "The server's certificate is not trusted.";
    }
    return "The request failed.";
}

std::string_view text(ResponseValidationError code) {
    switch (code) {
    case ResponseValidationError::unacceptableStatusCode:
        return "The server's reply has an unacceptable status code.";
    case ResponseValidationError::unacceptableContentType:
        return "The server's reply has an unacceptable content type.";
    case ResponseValidationError::missingContentType:
        return "The server's reply has no content type.";
    case ResponseValidationError::inputDataNilOrZeroLength:
        return "The server's reply is empty.";
    case ResponseValidationError::stringSerializationFailed:
        return "The server's reply could not be read as text.";
    case ResponseValidationError::jsonSerializationFailed:
        return "The server's reply could not be read as JSON.";
    case ResponseValidationError::objectMappingFailed:
        break;
    }
    return "The server's reply could not be mapped to an object.";
}

template<class Code>
Error makeError(std::string_view domain, Code code, std::string_view detail) {
    std::string description(text(code));
    if (!detail.empty()) {
        description.append(" (").append(detail).append(")");
    }
    return Error{std::string(domain), static_cast<std::int64_t>(code), std::move(description), {}};
}

} // namespace

Error httpTransportError(HttpTransportError code, std::string_view detail) {
    return makeError(HttpTransportErrorDomain, code, detail);
}

Error responseValidationError(ResponseValidationError code, std::string_view detail) {
    return makeError(ResponseValidationErrorDomain, code, detail);
}

} // namespace teralune
