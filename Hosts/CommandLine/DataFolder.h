#pragma once

#include "Platform/Foundation/Result.h"

#include <filesystem>

namespace teralune {

/// Makes the folder, for its owner alone, where it is missing. Fails, with a line for the user, when it can't
/// be made or written to, or when a file in the place of the store is none: the library ends the process
/// without its store, which is too late for a clear answer.
Result<void> prepareDataFolder(const std::filesystem::path& folder);

} // namespace teralune
