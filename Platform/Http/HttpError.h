#pragma once

#include "Platform/Foundation/Error.h"

#include <string>
#include <string_view>

namespace teralune {

/// Errors of the transport. The codes are the phone's, so that hosts read the same numbers everywhere.
inline constexpr std::string_view HttpTransportErrorDomain = "HttpTransport";

enum class HttpTransportError : std::int64_t {
    unknown = -1,
    cancelled = -999,
    badURL = -1000,
    timedOut = -1001,
    unsupportedURL = -1002,
    cannotFindHost = -1003,
    cannotConnectToHost = -1004,
    networkConnectionLost = -1005,
    httpTooManyRedirects = -1007,
    notConnectedToInternet = -1009,
    redirectToNonExistentLocation = -1010,
    badServerResponse = -1011,
    cannotDecodeContentData = -1016,
    cannotParseResponse = -1017,
    dataLengthExceedsMaximum = -1103,
    fileDoesNotExist = -1100,
    secureConnectionFailed = -1200,
    serverCertificateUntrusted = -1202,
};

/// With the house's text for the code, followed by the detail where there is one.
Error httpTransportError(HttpTransportError code, std::string_view detail = {});

/// Errors of a reply that arrived but is not acceptable.
inline constexpr std::string_view ResponseValidationErrorDomain = "ResponseValidation";

enum class ResponseValidationError : std::int64_t {
    unacceptableStatusCode = 1,
    unacceptableContentType = 2,
    missingContentType = 3,
    inputDataNilOrZeroLength = 4,
    stringSerializationFailed = 5,
    jsonSerializationFailed = 6,
    objectMappingFailed = 7,
};

Error responseValidationError(ResponseValidationError code, std::string_view detail = {});

} // namespace teralune
