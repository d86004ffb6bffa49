#pragma once

#include "Platform/Foundation/Result.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3_stmt;

namespace teralune {

class StatementCache;

/// A prepared statement on loan from its connection; Database::statement() hands it out. It goes back when it
/// is destroyed, which must be before the connection is. Used by one thread at a time.
///
/// A failure, that of the preparation included, is kept: from then on there are no rows, run() fails, and
/// result() says why. So a caller binds and reads without looking, and asks once at the end.
class Statement {
public:
    /// For Database only. Owns the statement; without one it has failed from the start.
    Statement(sqlite3_stmt* statement, StatementCache* cache, std::optional<Error> failure);
    ~Statement();
    Statement(Statement&& other) noexcept;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    Statement& operator=(Statement&&) = delete;

    /// Parameters are numbered from 1. A text is bound by its length, so that U+0000 survives, and not
    /// copied: it must live until the statement has run.
    void bind(int parameter, std::string_view text);
    void bind(int parameter, std::int64_t number);
    void bind(int parameter, std::nullopt_t);
    template<class Value>
    void bind(int parameter, const std::optional<Value>& value) {
        if (value) {
            bind(parameter, *value);
        } else {
            bind(parameter, std::nullopt);
        }
    }
    /// Binds the parameters 1, 2, 3, …
    template<class... Values>
    Statement& bindAll(const Values&... values) {
        int parameter = 0;
        (bind(++parameter, values), ...);
        return *this;
    }

    /// Steps to the next row; false at the end and after a failure.
    bool nextRow();
    /// Runs a statement whose rows, if any, are of no interest, and makes it ready to be bound and run again.
    Result<void> run();
    Result<void> result() const;

    /// Columns of the current row, numbered from 0. A text view is valid until the next row.
    bool isNull(int column) const;
    std::int64_t integer(int column) const;
    std::string_view text(int column);
    std::optional<std::int64_t> optionalInteger(int column) const;
    std::optional<std::string_view> optionalText(int column);
    std::optional<std::string> optionalString(int column);

private:
    void keepFailure(int code);

    sqlite3_stmt* statement_;
    StatementCache* cache_;
    std::optional<Error> failure_;
    bool hasEnded_ = false;
};

} // namespace teralune
