#pragma once

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace teralune {

/// A form of parts, each from memory or from a file that is opened anew for each attempt, so that a retried
/// upload sends the same bytes.
class MultipartFormData {
public:
    struct Part {
        std::string name;
        std::string fileName; ///< empty: the part is sent without one
        std::string mimeType;
        std::variant<std::string, std::filesystem::path> content;
    };

    MultipartFormData& append(Part part) {
        parts_.push_back(std::move(part));
        return *this;
    }
    const std::vector<Part>& parts() const { return parts_; }

private:
    std::vector<Part> parts_;
};

} // namespace teralune
