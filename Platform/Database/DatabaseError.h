#pragma once

#include "Platform/Foundation/Error.h"

#include <string_view>

struct sqlite3;

namespace teralune {

/// The domain of the errors of Platform/Database. Their code is SQLite's extended result code, or the
/// system's errno for a file that can't be made.
inline constexpr std::string_view databaseErrorDomain = "DatabaseErrorDomain";

/// What went wrong on a connection just now; without a connection, what the code means.
Error databaseError(int code, sqlite3* connection);

} // namespace teralune
