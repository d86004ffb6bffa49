#include "Classes/Model/CoreData/NotebookEntryRepository.h"

#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Interfaces/IApplication.h"
#include "Classes/Model/CoreData/NotebookEntryTag.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Platform/Database/Database.h"
#include "Platform/Foundation/FatalError.h"

#include <utility>

namespace teralune {

NotebookEntryRepository::NotebookEntryRepository(std::shared_ptr<ObjectContext> managedObjectContext,
                                                 IApplication& application)
    : managedObjectContext_(std::move(managedObjectContext))
    ,
    // The server's times carry no zone. Taken as UTC they mean the same moment on every device, and none
    // falls into the gap of a clock change.
    dateFormatter_({.locale = "en_US_POSIX", .pattern = "MMM dd, yyyy hh:mm:ss a", .timeZone = "UTC"})
    , application_(application) {}

NotebookEntryRepository::~NotebookEntryRepository() = default;

void NotebookEntryRepository::print(Words line) const {
    printStoreLine(*application_.platform().printer, line);
}

void NotebookEntryRepository::report(Words message, const Error& error) const {
    reportStoreError(application_.crashReporter(), *application_.platform().printer, message, error);
}

bool NotebookEntryRepository::performAndWait(Words message, ObjectContext::Block block) const {
    const Result<void> saved = managedObjectContext_->performAndWait(block);
    if (!saved) {
        report(message, saved.error());
    }
    return saved.succeeded();
}

bool NotebookEntryRepository::fetchAndWait(Words message, ObjectContext::Block block) const {
    const Result<void> read = managedObjectContext_->fetchAndWait(block);
    if (!read) {
        report(message, read.error());
    }
    return read.succeeded();
}

std::vector<std::string> NotebookEntryRepository::notebookRequiredFields() const {
    return {"problem", "isFavorite", "remoteID", "notes"};
}

void NotebookEntryRepository::updateProblem(const std::string& query, Favorite favorite) {
    std::string missing;
    const Words message{"Could not fetch notebook entry to update favorite for ", query, ": "};
    const bool isSaved = performAndWait(message, [&](Database& database) -> Result<void> {
        std::int64_t entryID = 0;
        {
            Statement first =
                database.statement("SELECT id FROM entries WHERE problem = ? ORDER BY id LIMIT 1");
            first.bindAll(query);
            if (!first.nextRow()) {
                missing = "No notebook entry to update favorite for " + query;
                return first.result();
            }
            entryID = first.integer(0);
        }
        return database.statement("UPDATE entries SET isFavorite = ? WHERE id = ?")
            .bindAll(std::int64_t{favorite.value ? 1 : 0}, entryID)
            .run();
    });
    if (isSaved && !missing.empty()) {
        fatalError(missing);
    }
}

void NotebookEntryRepository::removeNotes(const std::vector<NotebookEntry>& notes) {
    performAndWait({"Could not remove selective notes from notebook: "},
                   [&](Database& database) -> Result<void> {
                       Statement remove = database.statement("DELETE FROM entries WHERE id = ?");
                       for (const NotebookEntry& note : notes) {
                           const std::optional<std::int64_t> entryID = note.rowID();
                           if (!entryID) {
                               continue;
                           }
                           if (Result<void> removed = remove.bindAll(*entryID).run(); !removed) {
                               return removed;
                           }
                       }
                       return {};
                   });
}

bool NotebookEntryRepository::deleteAll(std::string_view entityName, std::string_view script) {
    return performAndWait({"Could not delete all ", entityName, ": "},
                          [&](Database& database) { return database.execute(script); });
}

void NotebookEntryRepository::clear() {
    // What refers to the rows goes first, so that no row has to be looked for one by one.
    const bool hasNoEntries =
        deleteAll(NotebookEntry::EntityName, "DELETE FROM links; DELETE FROM steps; DELETE FROM entries");
    const bool hasNoTags = deleteAll(NotebookEntryTag::EntityName, "DELETE FROM links; DELETE FROM tags");
    if (!hasNoEntries || !hasNoTags) {
        return;
    }
    // The user who signs out leaves nothing in the file's free pages. Of an empty store there is nothing to
    // copy, however large its file.
    if (const Result<void> compacted = managedObjectContext_->compact(); !compacted) {
        report({"Could not compact the notebook store: "}, compacted.error());
    }
}

} // namespace teralune
