#pragma once

#include "Platform/Foundation/Error.h"

#include <string>
#include <string_view>

namespace teralune {

/// Errors of this host. The description is the one line that the user sees, and the code the process's exit
/// code.
inline constexpr std::string_view CommandErrorDomain = "teralune";

enum class ExitCode { done = 0, failed = 1, wrongUsage = 2 };

inline Error commandError(std::string line, ExitCode code = ExitCode::failed) {
    return {std::string(CommandErrorDomain), static_cast<int>(code), std::move(line), {}};
}

} // namespace teralune
