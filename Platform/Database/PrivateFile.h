#pragma once

#include "Platform/Foundation/Result.h"

#include <filesystem>

namespace teralune {

/// Makes sure that the file exists and that only its owner can read and write it, together with the files
/// that SQLite keeps beside it. Folders that are missing are made with mode 0700. A symbolic link is refused:
/// whoever could plant one would choose where the user's notes are written. Locks that the process holds on
/// the file stay.
Result<void> makePrivateFile(const std::filesystem::path& file);

} // namespace teralune
