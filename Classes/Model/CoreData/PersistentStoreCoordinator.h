#pragma once

#include "Classes/Model/CoreData/ObjectModel.h"
#include "Platform/Database/Database.h"
#include "Platform/Foundation/Result.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace teralune {

/// Holds the schema and the store files that were opened under it, each brought to the current version. The
/// object context reaches its connections here and does the locking; a store is attached before anyone uses
/// the context.
class PersistentStoreCoordinator {
public:
    explicit PersistentStoreCoordinator(ObjectModel model);

    /// Opens the SQLite file, making it when it is missing and migrating it when it is older. A repair that
    /// was interrupted after its decisive moment is finished before. The first store is the one that is
    /// worked with. Nothing is thrown, want of memory included.
    Result<void> addPersistentStore(const std::filesystem::path& file);
    /// The files of the attached stores.
    std::vector<std::filesystem::path> persistentStores() const;

    /// Null without a store.
    Database* writer();
    /// Sees the last committed state and never waits for the writer. The writer itself where the file system
    /// allows no such reader; null without a store.
    Database* reader();

private:
    struct Store {
        std::filesystem::path file;
        Database writer;
        std::optional<Database> reader;
    };

    ObjectModel model_;
    std::vector<Store> stores_;
};

} // namespace teralune
