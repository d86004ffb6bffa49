#include "Classes/Model/CoreData/PersistentStoreCoordinator.h"

#include "Classes/Model/CoreData/StoreError.h"
#include "Platform/Database/FileReplacement.h"

#include <new>
#include <utility>

namespace teralune {

PersistentStoreCoordinator::PersistentStoreCoordinator(ObjectModel model) : model_(std::move(model)) {}

Result<void> PersistentStoreCoordinator::addPersistentStore(const std::filesystem::path& file) try {
    if (const Result<std::optional<std::filesystem::path>> repaired = finishReplacement(file); !repaired) {
        return repaired.error();
    }
    Result<Database> writer = Database::open({.file = file});
    if (!writer) {
        return writer.error();
    }
    if (Result<void> migrated = model_.migrate(writer.value()); !migrated) {
        return migrated;
    }
    std::optional<Database> reader;
    if (writer.value().hasWriteAheadLog()) {
        Result<Database> opened = Database::open({.file = file, .access = Database::Access::readOnly});
        if (!opened) {
            return opened.error();
        }
        reader = std::move(opened).value();
    }
    // What a repair that was given up had copied of the notes.
    discardReplacementDraft(file);
    stores_.push_back({file, std::move(writer).value(), std::move(reader)});
    return {};
} catch (const std::bad_alloc&) {
    return outOfMemoryError();
}

std::vector<std::filesystem::path> PersistentStoreCoordinator::persistentStores() const {
    std::vector<std::filesystem::path> files;
    for (const Store& store : stores_) {
        files.push_back(store.file);
    }
    return files;
}

Database* PersistentStoreCoordinator::writer() {
    return stores_.empty() ? nullptr : &stores_.front().writer;
}

Database* PersistentStoreCoordinator::reader() {
    if (stores_.empty()) {
        return nullptr;
    }
    Store& store = stores_.front();
    return store.reader ? &*store.reader : &store.writer;
}

} // namespace teralune
