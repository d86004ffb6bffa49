#include "Classes/Networking/ReplyReading.h"

#include "Platform/Http/HttpError.h"

namespace teralune {

bool isUnreadableReply(const Error& error) {
    if (error.domain != ResponseValidationErrorDomain)
        return false;
    switch (static_cast<ResponseValidationError>(error.code)) {
    case ResponseValidationError::inputDataNilOrZeroLength:
    case ResponseValidationError::stringSerializationFailed:
    case ResponseValidationError::jsonSerializationFailed:
    case ResponseValidationError::objectMappingFailed:
        return true;
    case ResponseValidationError::unacceptableStatusCode:
    case ResponseValidationError::unacceptableContentType:
    case ResponseValidationError::missingContentType:
        return false;
    }
    return false;
}

bool isAnswer(const std::string& body) {
    return !body.empty() && body != "null";
}

} // namespace teralune
