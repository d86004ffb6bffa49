#include "Classes/Model/CoreData/ObjectContext.h"

#include "Classes/Model/CoreData/PersistentStoreCoordinator.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Platform/Database/Database.h"
#include "Platform/Database/Transaction.h"

#include <new>
#include <utility>

namespace teralune {
namespace {

Result<void> runInTransaction(Database* database, Transaction::Kind kind,
                              const ObjectContext::Block& block) try {
    if (database == nullptr) {
        return storeError(StoreErrorCode::noStore, "No store is open.");
    }
    if (database->isInTransaction()) {
        return block(*database);
    }
    Result<Transaction> transaction = Transaction::begin(*database, kind);
    if (!transaction) {
        return transaction.error();
    }
    if (Result<void> done = block(*database); !done) {
        return done;
    }
    return transaction.value().commit();
} catch (const std::bad_alloc&) {
    return storeError(StoreErrorCode::outOfMemory, "There is not enough memory.");
}

} // namespace

ObjectContext::ObjectContext(std::shared_ptr<PersistentStoreCoordinator> coordinator,
                             std::shared_ptr<Printer> printer)
    : coordinator_(std::move(coordinator))
    , printer_(std::move(printer)) {}

Result<void> ObjectContext::performAndWait(const Block& block) {
    const std::scoped_lock lock(writing_);
    return runInTransaction(coordinator_->writer(), Transaction::Kind::writing, block);
}

Result<void> ObjectContext::fetchAndWait(const Block& block) {
    // Where there is no separate reader the writer's lock is the one that counts.
    const bool hasReader = coordinator_->reader() != coordinator_->writer();
    const std::scoped_lock lock(hasReader ? reading_ : writing_);
    return runInTransaction(coordinator_->reader(), Transaction::Kind::reading, block);
}

Result<void> ObjectContext::compact() {
    const std::scoped_lock lock(writing_, reading_);
    Database* const writer = coordinator_->writer();
    if (writer == nullptr) {
        return storeError(StoreErrorCode::noStore, "No store is open.");
    }
    return writer->execute("VACUUM; PRAGMA wal_checkpoint(TRUNCATE)");
}

} // namespace teralune
