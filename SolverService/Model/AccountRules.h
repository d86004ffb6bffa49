#pragma once

#include "Platform/Foundation/Result.h"

#include <string>

namespace teralune::service {

/// How long the identifier is that clients know an account by, in random bytes.
constexpr int accountIdentifierBytes = 12;
constexpr std::size_t longestName = 100;

/// A refusal whose text is for the user.
Error refusal(std::string message);

/// Whether the text could be an e-mail address; only a letter to it would tell more.
bool looksLikeEmail(const std::string& text);

/// Refuses a new password that is too short or too long, or was not typed the same way twice.
Result<void> checkNewPassword(const std::string& password, const std::string& confirmation);

} // namespace teralune::service
