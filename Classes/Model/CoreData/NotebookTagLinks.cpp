#include "Classes/Model/CoreData/NotebookTagLinks.h"

#include "Platform/Database/Database.h"

#include <optional>

namespace teralune {

Result<void> NotebookTagLinks::add(std::int64_t entryID, const std::vector<std::string>& tags,
                                   Outcome& outcome) {
    {
        Statement entry = database_.statement("SELECT 1 FROM entries WHERE id = ?");
        entry.bindAll(entryID);
        if (!entry.nextRow()) {
            return entry.result();
        }
    }
    Statement insert = database_.statement("INSERT INTO tags(tagText) VALUES (?)");
    Statement link = database_.statement("INSERT OR IGNORE INTO links(entryID, tagID) VALUES (?, ?)");
    for (const std::string& tag : tags) {
        if (tag.empty()) {
            continue;
        }
        std::optional<std::int64_t> tagID;
        Statement find = database_.statement("SELECT id FROM tags WHERE tagText = ? ORDER BY id LIMIT 1");
        find.bindAll(tag);
        if (find.nextRow()) {
            tagID = find.integer(0);
        }
        if (Result<void> found = find.result(); !found) {
            if (!database_.isInTransaction()) {
                return found;
            }
            outcome.failures.push_back({tag, found.error()});
            continue;
        }
        if (!tagID) {
            if (Result<void> inserted = insert.bindAll(tag).run(); !inserted) {
                return inserted;
            }
            tagID = database_.lastInsertedRowID();
        }
        if (Result<void> linked = link.bindAll(entryID, *tagID).run(); !linked) {
            return linked;
        }
        outcome.borne.push_back(tag);
    }
    return {};
}

Result<void> NotebookTagLinks::remove(std::int64_t entryID, const std::vector<std::string>& tags) {
    Statement unlink = database_.statement(
        "DELETE FROM links WHERE entryID = ? AND tagID IN (SELECT id FROM tags WHERE tagText = ?)");
    for (const std::string& tag : tags) {
        if (Result<void> unlinked = unlink.bindAll(entryID, tag).run(); !unlinked) {
            return unlinked;
        }
    }
    return {};
}

} // namespace teralune
