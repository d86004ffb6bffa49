#include "SolverService/Http/Multipart.h"

namespace teralune::service {

namespace {

constexpr std::size_t longestBoundary = 70;
constexpr std::size_t mostParts = 100;

/// The value of name="value" or name=value in a header line.
std::optional<std::string> attribute(std::string_view line, std::string_view name) {
    const std::string wanted = std::string(name) + "=";
    std::size_t start = line.find(wanted);
    while (start != std::string_view::npos && start > 0 && line[start - 1] != ' ' && line[start - 1] != ';') {
        start = line.find(wanted, start + 1);
    }
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view value = line.substr(start + wanted.size());
    if (value.starts_with('"')) {
        value.remove_prefix(1);
        return std::string(value.substr(0, value.find('"')));
    }
    return std::string(value.substr(0, value.find_first_of("; \r")));
}

/// The part's "Content-Disposition" line.
std::string_view disposition(std::string_view head) {
    while (!head.empty()) {
        const std::string_view line = head.substr(0, head.find("\r\n"));
        head.remove_prefix(std::min(head.size(), line.size() + 2));
        if (line.size() > 20 &&
            (line.starts_with("Content-Disposition:") || line.starts_with("content-disposition:"))) {
            return line;
        }
    }
    return {};
}

} // namespace

std::optional<std::vector<FormPart>> formParts(const ReceivedRequest& request) {
    const std::string contentType = request.header("Content-Type").value_or(std::string());
    const std::string boundary = attribute(contentType, "boundary").value_or(std::string());
    if (!contentType.starts_with("multipart/form-data") || boundary.empty() ||
        boundary.size() > longestBoundary) {
        return std::nullopt;
    }
    // With the line break before the body put back, every delimiter looks the same.
    const std::string first = "--" + boundary;
    const std::string delimiter = "\r\n" + first;
    std::string_view rest = request.body;
    if (!rest.starts_with(first)) {
        return std::nullopt;
    }
    rest.remove_prefix(first.size());
    std::vector<FormPart> parts;
    while (rest.starts_with("\r\n") && parts.size() < mostParts) {
        const std::size_t end = rest.find(delimiter);
        const std::size_t head = rest.find("\r\n\r\n");
        if (end == std::string_view::npos || head == std::string_view::npos || head > end) {
            return std::nullopt;
        }
        const std::string_view line = disposition(rest.substr(2, head));
        FormPart part;
        part.name = attribute(line, "name").value_or(std::string());
        part.fileName = attribute(line, "filename");
        part.content = rest.substr(head + 4, end > head + 4 ? end - head - 4 : 0);
        parts.push_back(std::move(part));
        rest.remove_prefix(end + delimiter.size());
    }
    return rest.starts_with("--") ? std::optional(std::move(parts)) : std::nullopt;
}

} // namespace teralune::service
