#pragma once

#include "Platform/Foundation/Result.h"

namespace teralune {

class Database;

/// All or nothing: what is done on the connection while one of these lives is rolled back when it goes,
/// unless it was committed. Transactions do not nest. Used on the thread that uses the connection.
class Transaction {
public:
    /// A reading transaction sees one state of the file throughout. A writing one takes the file's write lock
    /// at once, so that it can't fail for want of it half-way.
    enum class Kind { reading, writing };

    static Result<Transaction> begin(Database& database, Kind kind);
    /// Rolls back what an earlier transaction left open because its own rollback failed; otherwise it would
    /// swallow all that follows. Only while no transaction lives on the connection.
    static Result<void> rollBackAbandoned(Database& database);
    ~Transaction();
    Transaction(Transaction&& other) noexcept;
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    Transaction& operator=(Transaction&&) = delete;

    /// False once it was committed, and after an error at which SQLite rolled back by itself.
    bool isOpen() const;
    /// Fails, and has written nothing, when the transaction is no longer open.
    Result<void> commit();

private:
    explicit Transaction(Database& database) : database_(&database) {}
    Database* database_;
};

} // namespace teralune
