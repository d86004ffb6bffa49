#include "Classes/Model/CoreData/ObjectContext.h"

#include "Classes/Model/CoreData/PersistentStoreCoordinator.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Platform/Database/Database.h"
#include "Platform/Database/Transaction.h"

#include <new>
#include <utility>

namespace teralune {
namespace {

class Nesting {
public:
    explicit Nesting(int& depth) : depth_(depth) { ++depth_; }
    ~Nesting() { --depth_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    int& depth_;
};

/// Whether a block is inside another is counted, not asked of the connection: that is also in a transaction
/// when an earlier rollback failed, and nothing would ever commit what is then done.
Result<void> runInTransaction(Database* database, Transaction::Kind kind, int& depth,
                              ObjectContext::Block block) try {
    if (database == nullptr) {
        return storeError(StoreErrorCode::noStore, "No store is open.");
    }
    if (depth > 0) {
        return database->isInTransaction()
                   ? block(*database)
                   : storeError(StoreErrorCode::transactionLost, "The transaction was rolled back.");
    }
    if (Result<void> ended = Transaction::rollBackAbandoned(*database); !ended) {
        return ended;
    }
    Result<Transaction> transaction = Transaction::begin(*database, kind);
    if (!transaction) {
        return transaction.error();
    }
    const Nesting nesting(depth);
    if (Result<void> done = block(*database); !done) {
        return done;
    }
    return transaction.value().commit();
} catch (const std::bad_alloc&) {
    return outOfMemoryError();
}

} // namespace

ObjectContext::ObjectContext(std::shared_ptr<PersistentStoreCoordinator> coordinator,
                             std::shared_ptr<Printer> printer)
    : coordinator_(std::move(coordinator))
    , printer_(std::move(printer)) {}

Result<void> ObjectContext::performAndWait(Block block) {
    const std::scoped_lock lock(writing_.mutex);
    return runInTransaction(coordinator_->writer(), Transaction::Kind::writing, writing_.depth, block);
}

Result<void> ObjectContext::fetchAndWait(Block block) {
    // Where there is no separate reader the writer's lock is the one that counts.
    const bool hasReader = coordinator_->reader() != coordinator_->writer();
    Lane& lane = hasReader ? reading_ : writing_;
    const std::scoped_lock lock(lane.mutex);
    return runInTransaction(coordinator_->reader(), Transaction::Kind::reading, lane.depth, block);
}

Result<void> ObjectContext::compact() try {
    const std::scoped_lock lock(writing_.mutex, reading_.mutex);
    Database* const writer = coordinator_->writer();
    if (writer == nullptr) {
        return storeError(StoreErrorCode::noStore, "No store is open.");
    }
    if (Result<void> vacuumed = writer->execute("VACUUM"); !vacuumed) {
        return vacuumed;
    }
    // A checkpoint that has to leave the log as it is says so in its row, not by an error.
    Statement checkpoint = writer->statement("PRAGMA wal_checkpoint(TRUNCATE)", Database::Reuse::once);
    if (checkpoint.nextRow() && checkpoint.integer(0) != 0) {
        return storeError(StoreErrorCode::storeInUse, "The store is in use.");
    }
    return checkpoint.result();
} catch (const std::bad_alloc&) {
    return outOfMemoryError();
}

} // namespace teralune
