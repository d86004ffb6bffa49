#pragma once

#include "Platform/Foundation/Result.h"

#include <memory>
#include <mutex>

namespace teralune {

class Database;
class PersistentStoreCoordinator;
class Printer;

/// The one way to the store's rows, from any thread: the caller waits until its block has run. Nothing that
/// fails is thrown, want of memory included. Until a store is attached every block fails without running.
class ObjectContext {
public:
    /// What is to be done, on loan from the caller while it waits: handing it over takes no memory.
    class Block {
    public:
        template<class Callable>
        Block(const Callable& callable)
            : callable_(&callable)
            , call_([](const void* given, Database& database) -> Result<void> {
                return (*static_cast<const Callable*>(given))(database);
            }) {}
        Result<void> operator()(Database& database) const { return call_(callable_, database); }

    private:
        const void* callable_;
        Result<void> (*call_)(const void*, Database&);
    };

    ObjectContext(std::shared_ptr<PersistentStoreCoordinator> coordinator, std::shared_ptr<Printer> printer);

    /// Runs the block with the writing connection, one block after the other, and saves what it did as one
    /// transaction when it succeeds; a failure leaves the store as it was. A block inside a block of the same
    /// thread belongs to the outer one's transaction, and fails when that is gone.
    Result<void> performAndWait(Block block);
    /// Runs a block that only reads, on the last saved state, which stays the same throughout the block. Does
    /// not wait for performAndWait() of other threads. The block calls nothing of this context.
    Result<void> fetchAndWait(Block block);
    /// Gives the space of deleted rows back to the file system, and with it what they held. Copies every row
    /// that is left, so it is for a store that has just been emptied. Fails while another process reads.
    Result<void> compact();

    /// Where the operations of entries print their failures.
    Printer& printer() const { return *printer_; }

private:
    /// The lock of one connection, and how many blocks its holder is in.
    struct Lane {
        std::recursive_mutex mutex;
        int depth = 0;
    };

    std::shared_ptr<PersistentStoreCoordinator> coordinator_;
    std::shared_ptr<Printer> printer_;
    Lane writing_;
    Lane reading_;
};

} // namespace teralune
