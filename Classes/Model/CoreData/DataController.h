#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string_view>

namespace teralune {

class IApplication;
class NotebookEntryRepositoryType;
class ObjectContext;
class PersistentStoreCoordinator;

/// Owns the notebook store: the file "DataModel2.sqlite" in the last of the user's documents folders. The
/// host makes one before any notebook work and keeps it for the life of the process. Its operations may be
/// called from any thread.
///
/// The library does not run without its store: a schema that is missing or unreadable and a file that can't
/// be opened or migrated end the program while the controller is made. repairStore() is the way out.
class DataController {
public:
    static constexpr std::string_view storeFileName = "DataModel2.sqlite";

    /// Opens the store on the default-priority queue and waits for it. Making one in that queue's own work is
    /// a fatal error.
    explicit DataController(IApplication& application);
    ~DataController();
    DataController(const DataController&) = delete;
    DataController& operator=(const DataController&) = delete;

    ObjectContext& managedObjectContext() { return *managedObjectContext_; }
    PersistentStoreCoordinator& persistentStoreCoordinator() { return *persistentStoreCoordinator_; }
    NotebookEntryRepositoryType& notebookEntryRepository() { return *notebookEntryRepository_; }

    /// The sizes of the attached store files together. A file that can't be asked is a fatal error.
    std::uint64_t getStorageBytes() const;
    /// Empties the notebook; the file stays.
    void logout();

private:
    IApplication& application_;
    std::shared_ptr<PersistentStoreCoordinator> persistentStoreCoordinator_;
    std::shared_ptr<ObjectContext> managedObjectContext_;
    std::unique_ptr<NotebookEntryRepositoryType> notebookEntryRepository_;
};

} // namespace teralune
