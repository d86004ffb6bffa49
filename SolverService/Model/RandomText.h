#pragma once

#include <string>

namespace teralune::service {

/// An unguessable text of letters and digits: 2 × bytes hexadecimal digits. For tokens and identifiers;
/// none of its characters means anything in a cookie or in a URL.
std::string randomText(int bytes);

} // namespace teralune::service
