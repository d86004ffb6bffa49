#include "SolverService/Http/ReceivedRequest.h"

#include <strings.h>

#include <algorithm>

namespace teralune::service {

namespace {

bool sameName(std::string_view left, std::string_view right) {
    return left.size() == right.size() && strncasecmp(left.data(), right.data(), left.size()) == 0;
}

} // namespace

std::string_view ReceivedRequest::path() const {
    return std::string_view(target).substr(0, target.find('?'));
}

std::optional<std::string> ReceivedRequest::header(std::string_view name) const {
    const auto found = std::find_if(headers.begin(), headers.end(),
                                    [&](const auto& item) { return sameName(item.first, name); });
    if (found == headers.end()) {
        return std::nullopt;
    }
    return found->second;
}

std::optional<std::string> ReceivedRequest::cookie(std::string_view name) const {
    for (const auto& [headerName, line] : headers) {
        if (!sameName(headerName, "Cookie")) {
            continue;
        }
        std::string_view rest = line;
        while (!rest.empty()) {
            std::string_view item = rest.substr(0, rest.find(';'));
            rest.remove_prefix(std::min(rest.size(), item.size() + 1));
            item.remove_prefix(std::min(item.size(), item.find_first_not_of(' ')));
            if (item.size() > name.size() && item.starts_with(name) && item[name.size()] == '=') {
                return std::string(item.substr(name.size() + 1));
            }
        }
    }
    return std::nullopt;
}

void ReceivedRequest::readParameters() {
    const std::size_t question = target.find('?');
    if (question != std::string::npos) {
        parameters.read(std::string_view(target).substr(question + 1));
    }
    const std::string contentType = header("Content-Type").value_or(std::string());
    if (sameName(std::string_view(contentType).substr(0, contentType.find(';')),
                 "application/x-www-form-urlencoded")) {
        parameters.read(body);
    }
}

} // namespace teralune::service
