#pragma once

#include "Platform/Http/HttpHeaders.h"
#include "Platform/Http/HttpMethod.h"

#include <memory>
#include <string>
#include <variant>

namespace teralune {

class MultipartFormData;

/// What is to be sent: a value that is copied freely; bodies are shared and never change.
struct URLRequest {
    using Body = std::variant<std::monostate, std::shared_ptr<const std::string>,
                              std::shared_ptr<const MultipartFormData>>;

    std::string url; ///< absolute; empty when the text it was made from is no URL
    HttpMethod method = HttpMethod::get;
    HttpHeaders headers;
    Body body;
};

} // namespace teralune
