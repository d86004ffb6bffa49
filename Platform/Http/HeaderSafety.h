#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Http/URLRequest.h"

#include <optional>

namespace teralune {

/// Why a request must not be sent: a header name that is no token, or a control character in a header's value
/// or in the type of a form's part, any of which could smuggle further headers or a second request into the
/// connection. Absent for a safe request. The error tells the header's name, never its value.
std::optional<Error> unsafeHeaderError(const URLRequest& request);

} // namespace teralune
