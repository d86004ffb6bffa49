#include "Platform/Database/Statement.h"

#include "Platform/Database/DatabaseError.h"
#include "Platform/Database/StatementCache.h"

#include <sqlite3.h>
#include <utility>

namespace teralune {

Statement::Statement(sqlite3_stmt* statement, StatementCache* cache, std::optional<Error> failure)
    : statement_(statement)
    , cache_(cache)
    , failure_(std::move(failure)) {}

Statement::Statement(Statement&& other) noexcept
    : statement_(std::exchange(other.statement_, nullptr))
    , cache_(other.cache_)
    , failure_(std::move(other.failure_))
    , hasEnded_(other.hasEnded_) {}

Statement::~Statement() {
    if (statement_ == nullptr) {
        return;
    }
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
    if (cache_ != nullptr) {
        cache_->giveBack(statement_);
    } else {
        sqlite3_finalize(statement_);
    }
}

void Statement::keepFailure(int code) {
    if (!failure_) {
        failure_ = databaseError(code, statement_ != nullptr ? sqlite3_db_handle(statement_) : nullptr);
    }
}

void Statement::bind(int parameter, std::string_view text) {
    if (failure_) {
        return;
    }
    // A null pointer would bind NULL, and an empty text is not an absent one.
    const char* const bytes = text.data() != nullptr ? text.data() : "";
    const int code =
        sqlite3_bind_text64(statement_, parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8);
    if (code != SQLITE_OK) {
        keepFailure(code);
    }
}

void Statement::bind(int parameter, std::int64_t number) {
    if (failure_) {
        return;
    }
    if (const int code = sqlite3_bind_int64(statement_, parameter, number); code != SQLITE_OK) {
        keepFailure(code);
    }
}

void Statement::bind(int parameter, std::nullopt_t) {
    if (failure_) {
        return;
    }
    if (const int code = sqlite3_bind_null(statement_, parameter); code != SQLITE_OK) {
        keepFailure(code);
    }
}

bool Statement::nextRow() {
    if (failure_ || hasEnded_) {
        return false;
    }
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) {
        return true;
    }
    hasEnded_ = true;
    if (code != SQLITE_DONE) {
        keepFailure(code);
    }
    // A statement that is left standing at its end would keep its read transaction open.
    sqlite3_reset(statement_);
    return false;
}

Result<void> Statement::run() {
    while (nextRow()) {
    }
    hasEnded_ = false;
    return result();
}

Result<void> Statement::result() const {
    if (failure_) {
        return *failure_;
    }
    return {};
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(statement_, column);
}

std::optional<std::string_view> Statement::optionalText(int column) {
    const unsigned char* const bytes = sqlite3_column_text(statement_, column);
    if (bytes == nullptr) {
        // Either NULL, or a long text for which there was no memory.
        if (sqlite3_errcode(sqlite3_db_handle(statement_)) == SQLITE_NOMEM) {
            keepFailure(SQLITE_NOMEM);
        }
        return std::nullopt;
    }
    return std::string_view(reinterpret_cast<const char*>(bytes),
                            static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

std::string_view Statement::text(int column) {
    return optionalText(column).value_or(std::string_view());
}

std::optional<std::string> Statement::optionalString(int column) {
    const std::optional<std::string_view> view = optionalText(column);
    return view ? std::optional<std::string>(*view) : std::nullopt;
}

std::optional<std::int64_t> Statement::optionalInteger(int column) const {
    if (isNull(column)) {
        return std::nullopt;
    }
    return integer(column);
}

} // namespace teralune
