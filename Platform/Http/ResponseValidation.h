#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Http/HTTPURLResponse.h"
#include "Platform/Http/URLRequest.h"

#include <cstddef>
#include <optional>

namespace teralune {

/// Why a reply that arrived is not acceptable; absent for one that is. Its status has to be 200 to 299 and,
/// unless its body is empty, its content type one that the request's Accept header admits. Of the header's
/// ranges the most specific one that matches decides, so that "text/html;q=0, */*" admits all but HTML; a
/// request without the header admits everything.
std::optional<Error> validationError(const URLRequest& request, const HTTPURLResponse& response,
                                     std::size_t bodySize);

} // namespace teralune
