#include "Platform/Http/ResponseFinisher.h"

namespace teralune {

Error currentExceptionError() {
    try {
        throw;
    } catch (const std::exception& exception) {
        return httpTransportError(HttpTransportError::unknown, exception.what());
    } catch (...) {
        return httpTransportError(HttpTransportError::unknown, "an exception");
    }
}

} // namespace teralune
