#pragma once

#include <cstddef>

namespace teralune {

/// Lookups of names that end in ".stuck.test" hang in this program until they are released, as with a name
/// server that never answers; released, they fail.
class StuckLookups {
public:
    static void waitFor(std::size_t count);
    static void releaseAll();
};

} // namespace teralune
