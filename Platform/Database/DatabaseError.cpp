#include "Platform/Database/DatabaseError.h"

#include <sqlite3.h>

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

} // namespace teralune
