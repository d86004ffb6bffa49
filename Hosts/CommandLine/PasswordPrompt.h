#pragma once

#include "Platform/Foundation/Result.h"

#include <string>

namespace teralune {

/// A password from the named environment variable or, on a terminal, asked for without echo. Never an
/// argument: arguments are seen by every user of the machine.
Result<std::string> askForPassword(const std::string& prompt,
                                   const char* environmentVariable = "TERALUNE_PASSWORD");

} // namespace teralune
