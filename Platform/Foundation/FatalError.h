#pragma once

#include <string_view>

namespace teralune {

/// Prints the message on standard error and aborts. For programmer errors and for the few documented
/// conditions without which the library does not run (the notebook store above all).
[[noreturn]] void fatalError(std::string_view message);

} // namespace teralune
