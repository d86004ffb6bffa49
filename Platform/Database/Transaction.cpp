#include "Platform/Database/Transaction.h"

#include "Platform/Database/Database.h"
#include "Platform/Database/DatabaseError.h"

#include <new>
#include <sqlite3.h>
#include <utility>

namespace teralune {

Result<Transaction> Transaction::begin(Database& database, Kind kind) {
    Result<void> begun = database.statement(kind == Kind::writing ? "BEGIN IMMEDIATE" : "BEGIN").run();
    if (!begun) {
        return begun.error();
    }
    return Transaction(database);
}

Transaction::Transaction(Transaction&& other) noexcept : database_(std::exchange(other.database_, nullptr)) {}

Transaction::~Transaction() {
    if (isOpen()) {
        // There is nobody left to tell of a failure. rollBackAbandoned() sees to what stays open.
        try {
            static_cast<void>(database_->statement("ROLLBACK").run());
        } catch (const std::bad_alloc&) {
            return;
        }
    }
}

Result<void> Transaction::rollBackAbandoned(Database& database) {
    return database.isInTransaction() ? database.statement("ROLLBACK").run() : Result<void>();
}

bool Transaction::isOpen() const {
    return database_ != nullptr && database_->isInTransaction();
}

Result<void> Transaction::commit() {
    if (!isOpen()) {
        return databaseError(SQLITE_ABORT_ROLLBACK, nullptr);
    }
    Result<void> committed = database_->statement("COMMIT").run();
    if (committed) {
        database_ = nullptr;
    }
    return committed;
}

} // namespace teralune
