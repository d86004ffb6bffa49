#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Interfaces/IApplication.h"
#include "Classes/Model/CoreData/MergePlan.h"
#include "Classes/Model/CoreData/NotebookEntryRepository.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Platform/Database/Database.h"

#include <new>
#include <utility>

namespace teralune {
namespace {

constexpr std::string_view couldNotInsert = "Could not insert notebook entries: ";

std::optional<std::int64_t> flagColumn(const std::optional<bool>& flag) {
    return flag ? std::optional<std::int64_t>(*flag ? 1 : 0) : std::nullopt;
}

/// Walks through the tags, and then through the entries with their links beside them.
Result<void> meetStore(Database& database, MergePlan& plan) {
    Statement tags = database.statement("SELECT id, tagText FROM tags ORDER BY id");
    while (tags.nextRow()) {
        plan.meetTag(tags.integer(0), tags.optionalText(1));
    }
    if (Result<void> result = tags.result(); !result) {
        return result;
    }
    Statement links = database.statement("SELECT entryID, tagID FROM links ORDER BY entryID, tagID");
    Statement entries =
        database.statement("SELECT id, isFavorite, lastChange, remoteID, savedFrom, topic, notes, "
                           "graph, url FROM entries ORDER BY id");
    std::vector<std::int64_t> tagIDs;
    bool hasLink = links.nextRow();
    while (entries.nextRow()) {
        MergePlan::StoredEntry entry;
        entry.id = entries.integer(0);
        entry.isFavorite = entries.optionalInteger(1);
        entry.lastChange = entries.optionalInteger(2);
        entry.remoteID = entries.optionalText(3);
        entry.savedFrom = entries.optionalText(4);
        entry.topic = entries.optionalText(5);
        entry.notes = entries.optionalText(6);
        entry.graph = entries.optionalText(7);
        entry.url = entries.optionalText(8);
        tagIDs.clear();
        for (; hasLink && links.integer(0) <= entry.id; hasLink = links.nextRow()) {
            if (links.integer(0) == entry.id) {
                tagIDs.push_back(links.integer(1));
            }
        }
        plan.meetEntry(entry, tagIDs);
    }
    Result<void> result = entries.result();
    return result ? links.result() : result;
}

/// The row of each of the plan's tags, those that are missing inserted.
Result<std::vector<std::int64_t>> insertTags(Database& database, const MergePlan& plan) {
    std::vector<std::int64_t> rows;
    rows.reserve(plan.tagTexts().size());
    Statement insert = database.statement("INSERT INTO tags(tagText) VALUES (?)");
    for (std::size_t tag = 0; tag < plan.tagTexts().size(); ++tag) {
        if (const std::optional<std::int64_t> stored = plan.tagIDs()[tag]) {
            rows.push_back(*stored);
            continue;
        }
        if (Result<void> inserted = insert.bindAll(plan.tagTexts()[tag]).run(); !inserted) {
            return inserted.error();
        }
        rows.push_back(database.lastInsertedRowID());
    }
    return rows;
}

Result<void> updateEntries(Database& database, const MergePlan& plan) {
    Statement update = database.statement("UPDATE entries SET lastChange = ?, isFavorite = ?, savedFrom = ?, "
                                          "topic = ?, notes = ?, graph = ?, url = ? WHERE id = ?");
    for (const MergePlan::Update& change : plan.updates()) {
        const MergePlan::Record& record = plan.records()[plan.notes()[change.note].last];
        const NotebookEntryRecord& fields = record.fields;
        update.bindAll(record.lastChange, flagColumn(fields.isFavorite), fields.savedFrom, fields.topic,
                       fields.notes, fields.graph(), fields.url, change.entryID);
        if (Result<void> updated = update.run(); !updated) {
            return updated;
        }
    }
    return {};
}

Result<void> insertEntries(Database& database, const MergePlan& plan,
                           const std::vector<std::int64_t>& tagRows) {
    Statement insert =
        database.statement("INSERT INTO entries(remoteID, savedFrom, problem, lastChange, isFavorite, "
                           "topic, notes, graph, url) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
    Statement link = database.statement("INSERT INTO links(entryID, tagID) VALUES (?, ?)");
    for (const MergePlan::Note& note : plan.notes()) {
        if (note.isStored) {
            continue;
        }
        const MergePlan::Record& record = plan.records()[note.last];
        const NotebookEntryRecord& fields = record.fields;
        insert.bindAll(fields.id, fields.savedFrom, plan.records()[note.first].fields.problem,
                       record.lastChange, flagColumn(fields.isFavorite), fields.topic, fields.notes,
                       fields.graph(), fields.url);
        if (Result<void> inserted = insert.run(); !inserted) {
            return inserted;
        }
        const std::int64_t entryID = database.lastInsertedRowID();
        for (const std::uint32_t tag : note.tags) {
            if (Result<void> linked = link.bindAll(entryID, tagRows[tag]).run(); !linked) {
                return linked;
            }
        }
    }
    return {};
}

Result<void> changeLinks(Database& database, const MergePlan& plan,
                         const std::vector<std::int64_t>& tagRows) {
    Statement link = database.statement("INSERT INTO links(entryID, tagID) VALUES (?, ?)");
    for (const MergePlan::NewLink& added : plan.newLinks()) {
        if (Result<void> linked = link.bindAll(added.entryID, tagRows[added.tag]).run(); !linked) {
            return linked;
        }
    }
    Statement unlink = database.statement("DELETE FROM links WHERE entryID = ? AND tagID = ?");
    for (const MergePlan::OldLink& removed : plan.oldLinks()) {
        if (Result<void> unlinked = unlink.bindAll(removed.entryID, removed.tagID).run(); !unlinked) {
            return unlinked;
        }
    }
    Statement removeTag = database.statement("DELETE FROM tags WHERE id = ?");
    for (const std::int64_t tagID : plan.oldTags()) {
        if (Result<void> removed = removeTag.bindAll(tagID).run(); !removed) {
            return removed;
        }
    }
    return {};
}

/// The rows whose identifier the list lacks.
Result<std::vector<std::int64_t>> unlistedEntries(Database& database, const MergePlan& plan) {
    std::vector<std::int64_t> rows;
    Statement entries = database.statement("SELECT id, remoteID FROM entries");
    while (entries.nextRow()) {
        if (!plan.isListed(entries.optionalText(1))) {
            rows.push_back(entries.integer(0));
        }
    }
    if (Result<void> result = entries.result(); !result) {
        return result.error();
    }
    return rows;
}

} // namespace

void NotebookEntryRepository::insertNotebookEntries(const boost::json::array& entries) {
    print({"Got ", std::to_string(entries.size()), " notebook entries from server."});
    try {
        MergePlan plan = readRecords(entries);
        if (addAndUpdate(plan)) {
            removeDeleted(plan);
        }
    } catch (const std::bad_alloc&) {
        report({couldNotInsert}, outOfMemoryError());
    }
    print({"Completed refreshing entries in database."});
}

MergePlan NotebookEntryRepository::readRecords(const boost::json::array& entries) const {
    MergePlan plan;
    plan.reserve(entries.size());
    for (const boost::json::value& entry : entries) {
        NotebookEntryRecord record = NotebookEntryRecord::read(entry);
        if (!record.isComplete()) {
            print({"Item could not be processed!! ID: ", record.id.value_or(""),
                   " Problem: ", record.problem.value_or(""), " lastChange: ", record.lastChange.value_or(""),
                   " Date: ", record.date.value_or("")});
            plan.addUnusable(record.id);
            continue;
        }
        const std::optional<Date> lastChange = dateFormatter_.date(*record.date);
        if (!lastChange) {
            print({"Date was in wrong format: ", *record.date});
        }
        plan.add(std::move(record), lastChange);
    }
    plan.endList();
    return plan;
}

bool NotebookEntryRepository::addAndUpdate(MergePlan& plan) {
    return performAndWait({couldNotInsert}, [&](Database& database) -> Result<void> {
        if (Result<void> met = meetStore(database, plan); !met) {
            return met;
        }
        const Result<std::vector<std::int64_t>> tagRows = insertTags(database, plan);
        if (!tagRows) {
            return tagRows.error();
        }
        if (Result<void> updated = updateEntries(database, plan); !updated) {
            return updated;
        }
        if (Result<void> inserted = insertEntries(database, plan, tagRows.value()); !inserted) {
            return inserted;
        }
        return changeLinks(database, plan, tagRows.value());
    });
}

void NotebookEntryRepository::removeDeleted(const MergePlan& plan) {
    std::optional<std::size_t> found;
    const Result<void> saved = managedObjectContext_->performAndWait([&](Database& database) -> Result<void> {
        const Result<std::vector<std::int64_t>> unlisted = unlistedEntries(database, plan);
        if (!unlisted) {
            return unlisted.error();
        }
        found = unlisted.value().size();
        Statement remove = database.statement("DELETE FROM entries WHERE id = ?");
        for (const std::int64_t entryID : unlisted.value()) {
            if (Result<void> removed = remove.bindAll(entryID).run(); !removed) {
                return removed;
            }
        }
        return {};
    });
    if (found) {
        print({"Found ", std::to_string(*found), " entries to delete."});
    }
    if (!saved) {
        report({found ? "" : "Could not fetch notebook entries for deletion: "}, saved.error());
    }
}

} // namespace teralune
