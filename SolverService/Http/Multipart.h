#pragma once

#include "SolverService/Http/ReceivedRequest.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teralune::service {

/// One part of a multipart form. The content is a view into the request's body.
struct FormPart {
    std::string name;
    /// Absent for a part that is no file.
    std::optional<std::string> fileName;
    std::string_view content;
};

/// The parts of a multipart form body; absent when the request is none or is cut off before its end.
std::optional<std::vector<FormPart>> formParts(const ReceivedRequest& request);

} // namespace teralune::service
