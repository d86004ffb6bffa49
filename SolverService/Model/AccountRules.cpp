#include "SolverService/Model/AccountRules.h"

#include <algorithm>

namespace teralune::service {

namespace {

constexpr std::size_t longestEmail = 254;
constexpr std::size_t shortestPassword = 6;
constexpr std::size_t longestPassword = 1000;

} // namespace

Error refusal(std::string message) {
    return Error{"TeraluneSolverService", 0, std::move(message), {}};
}

bool looksLikeEmail(const std::string& text) {
    const std::size_t at = text.find('@');
    const bool plain = std::none_of(text.begin(), text.end(), [](char character) {
        return static_cast<unsigned char>(character) <= ' ' || character == ',' || character == ';';
    });
    return plain && text.size() <= longestEmail && at != 0 && at != std::string::npos &&
           text.find('@', at + 1) == std::string::npos && text.find('.', at + 2) != std::string::npos &&
           text.back() != '.';
}

Result<void> checkNewPassword(const std::string& password, const std::string& confirmation) {
    if (password.size() < shortestPassword || password.size() > longestPassword) {
        return refusal("The password must have at least 6 characters.");
    }
    if (password != confirmation) {
        return refusal("The passwords do not match.");
    }
    return {};
}

} // namespace teralune::service
