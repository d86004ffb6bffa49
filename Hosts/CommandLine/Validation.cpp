#include "Hosts/CommandLine/Validation.h"

#include <algorithm>

namespace teralune {
namespace {

constexpr std::ptrdiff_t longestTag = 20;

/// Two units for each character beyond the basic plane, which is one of four bytes.
std::ptrdiff_t utf16Length(const std::string& text) {
    return std::count_if(text.begin(), text.end(),
                         [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }) +
           std::count_if(text.begin(), text.end(),
                         [](char c) { return static_cast<unsigned char>(c) >= 0xF0U; });
}

} // namespace

CLI::Validator notEmpty() {
    return {[](std::string& text) { return text.empty() ? std::string("must not be empty") : std::string(); },
            ""};
}

CLI::Validator isTag() {
    return {[](std::string& text) {
                if (text.empty() || utf16Length(text) > longestTag)
                    return std::string("a tag has 1 to 20 characters");
                return text.find(',') != std::string::npos ? std::string("a tag has no comma")
                                                           : std::string();
            },
            ""};
}

} // namespace teralune
