#pragma once

#include <string>

namespace teralune {

/// A random (version 4) UUID as 36 characters, upper-case hexadecimal in groups of 8-4-4-4-12.
std::string makeUUIDString();

} // namespace teralune
