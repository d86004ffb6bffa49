#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace teralune {

/// Whether TERALUNE_FAULTS=long asks for the attacks in their long form, which takes minutes.
inline bool isLong() {
    const char* const form = std::getenv("TERALUNE_FAULTS");
    return form != nullptr && std::string_view(form) == "long";
}

/// How many times an attack is repeated in the short form and in the long one.
inline std::size_t faultCount(std::size_t inShort, std::size_t inLong) {
    return isLong() ? inLong : inShort;
}

/// Prints the one line in which a test tells what it has done.
inline void printFaults(const std::string& what, std::size_t points, const std::string& held) {
    std::printf("[ FAULTS   ] %s: %zu points; %s\n", what.c_str(), points, held.c_str());
}

} // namespace teralune
