#include "Platform/Database/DatabaseError.h"

#include <cerrno>
#include <sqlite3.h>
#include <string>
#include <system_error>

namespace teralune {

Error databaseError(int code, sqlite3* connection) {
    Error error;
    error.domain = databaseErrorDomain;
    error.code = code;
    // A connection keeps the message of its latest call only; it may belong to another code by now.
    const bool isLatest = connection != nullptr && sqlite3_extended_errcode(connection) == code;
    error.localizedDescription = isLatest ? sqlite3_errmsg(connection) : sqlite3_errstr(code);
    return error;
}

Error systemError(int code, const std::filesystem::path& path) {
    return {std::string(systemErrorDomain),
            code,
            path.string() + ": " + std::generic_category().message(code),
            {}};
}

bool isLocked(const Error& error) {
    const auto primary = error.code & 0xFF;
    return error.domain == databaseErrorDomain && (primary == SQLITE_BUSY || primary == SQLITE_LOCKED);
}

bool isFull(const Error& error) {
    return error.domain == databaseErrorDomain
               ? (error.code & 0xFF) == SQLITE_FULL
               : error.domain == systemErrorDomain &&
                     (error.code == ENOSPC || error.code == EDQUOT || error.code == EFBIG);
}

bool isUnreadable(const Error& error) {
    const auto primary = error.code & 0xFF;
    return error.domain == databaseErrorDomain && !isLocked(error) && primary != SQLITE_NOMEM &&
           error.code != SQLITE_IOERR_NOMEM && primary != SQLITE_CANTOPEN;
}

} // namespace teralune
