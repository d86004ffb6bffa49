#pragma once

#include <string_view>

namespace teralune {

enum class HttpMethod { get, head, post, put, patch, del };

/// As it stands in a request line.
constexpr std::string_view name(HttpMethod method) {
    constexpr std::string_view names[] = {"GET", "HEAD", "POST", "PUT", "PATCH", "DELETE"};
    return names[static_cast<int>(method)];
}

} // namespace teralune
