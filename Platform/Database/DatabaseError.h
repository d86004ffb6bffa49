#pragma once

#include "Platform/Foundation/Error.h"

#include <filesystem>
#include <string_view>

struct sqlite3;

namespace teralune {

/// The domains of the errors of Platform/Database: SQLite's, whose code is its extended result code, and the
/// system's, whose code is an errno, for a file that can't be made or moved.
inline constexpr std::string_view databaseErrorDomain = "DatabaseErrorDomain";
inline constexpr std::string_view systemErrorDomain = "SystemErrorDomain";

/// What went wrong on a connection just now; without a connection, what the code means.
Error databaseError(int code, sqlite3* connection);

/// What the system said of a file, by its errno.
Error systemError(int code, const std::filesystem::path& path);

/// Whether somebody else's lock is in the way.
bool isLocked(const Error& error);
/// Whether the disk, the user's share of it or a file can't take more.
bool isFull(const Error& error);
/// Whether reading failed because of what the file holds or can't give, rather than for want of memory, of a
/// lock or of a file descriptor, which says nothing of the file.
bool isUnreadable(const Error& error);

} // namespace teralune
