#include "Platform/Foundation/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace teralune {

void fatalError(std::string_view message) {
    std::fprintf(stderr, "Fatal error: %.*s\n", static_cast<int>(message.size()), message.data());
    std::fflush(stderr);
    std::abort();
}

} // namespace teralune
