#pragma once

#include <string>
#include <string_view>

namespace teralune::service {

/// A salted, deliberately slow digest of a password, as bytes that carry their own salt.
std::string digestPassword(std::string_view password);

/// Whether the password is the one of that digest. Takes as long for a digest that is none, so that the
/// time does not tell whether an account exists.
bool passwordMatches(std::string_view password, std::string_view digest);

/// SHA-256 of a text: how tokens are kept, so that a stolen data file signs nobody in.
std::string digestToken(std::string_view token);

} // namespace teralune::service
