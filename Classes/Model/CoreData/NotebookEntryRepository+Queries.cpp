#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Interfaces/IApplication.h"
#include "Classes/Model/CoreData/NotebookEntryBatch.h"
#include "Classes/Model/CoreData/NotebookEntryRepository.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Classes/Support/Localization.h"
#include "Platform/Database/Database.h"

#include <new>
#include <utility>

namespace teralune {
namespace {

constexpr std::string_view distinctTags =
    "SELECT DISTINCT tagText FROM tags WHERE tagText IS NOT NULL ORDER BY tagText";

/// Fills the temporary table that a compiled predicate reads its lists from. It belongs to the connection and
/// lives in memory.
Result<void> storeLists(Database& database, const Predicate::Compiled& predicate) {
    Result<void> prepared =
        database.execute("CREATE TEMP TABLE IF NOT EXISTS predicateValues(list INTEGER, value TEXT, "
                         "PRIMARY KEY(list, value)) WITHOUT ROWID;"
                         "DELETE FROM temp.predicateValues");
    if (!prepared) {
        return prepared;
    }
    Statement insert =
        database.statement("INSERT OR IGNORE INTO temp.predicateValues(list, value) VALUES (?, ?)");
    std::int64_t number = 0;
    for (const std::vector<std::string>* const list : predicate.lists) {
        ++number;
        for (const std::string& value : *list) {
            if (Result<void> inserted = insert.bindAll(number, value).run(); !inserted) {
                return inserted;
            }
        }
    }
    return {};
}

} // namespace

std::vector<NotebookEntry> NotebookEntryRepository::entriesForFilter(const Filter& filter) const {
    std::vector<NotebookEntry> notes;
    const bool isRead = fetchAndWait({couldNotFetchEntries}, [&](Database& database) -> Result<void> {
        std::string sql = "SELECT id, problem, isFavorite, remoteID, notes FROM entries";
        const std::optional<Predicate> predicate = filter.predicate();
        if (!predicate) {
            const Result<std::int64_t> rows = database.integer("SELECT count(*) FROM entries");
            notes.reserve(rows ? static_cast<std::size_t>(rows.value()) : 0);
        } else {
            const Predicate::Compiled compiled = predicate->compiled();
            if (Result<void> stored = storeLists(database, compiled); !stored) {
                return stored;
            }
            sql += " WHERE " + compiled.sql;
        }
        sql += " ORDER BY lastChange DESC, id DESC";
        const auto list = std::make_shared<NotebookEntryBatch>(
            managedObjectContext_, [&application = application_](const Error& error) {
                reportStoreError(application.crashReporter(), *application.platform().printer,
                                 {couldNotFetchEntries}, error);
            });
        Statement query = database.statement(sql);
        while (query.nextRow()) {
            ListedAttributes listed;
            listed.problem = query.optionalString(1);
            if (const std::optional<std::int64_t> isFavorite = query.optionalInteger(2)) {
                listed.isFavorite = *isFavorite != 0;
            }
            listed.remoteID = query.optionalString(3);
            listed.notes = query.optionalString(4);
            list->append(query.integer(0));
            notes.emplace_back(list, notes.size(), std::move(listed));
        }
        return query.result();
    });
    if (!isRead) {
        notes.clear();
    }
    return notes;
}

std::optional<AttributeDictionary>
NotebookEntryRepository::getNotebookEntry(const std::string& problem) const {
    std::optional<AttributeDictionary> attributes;
    const Words message{"Could not determine if problem exists: "};
    const bool isRead = fetchAndWait(message, [&](Database& database) -> Result<void> {
        Statement query = database.statement("SELECT graph, notes, problem, remoteID, savedFrom, topic, url, "
                                             "stepsData, isFavorite, lastCached, lastChange "
                                             "FROM entries LEFT JOIN steps ON steps.entryID = entries.id "
                                             "WHERE problem = ? ORDER BY id LIMIT 1");
        query.bindAll(problem);
        if (!query.nextRow()) {
            return query.result();
        }
        attributes.emplace();
        int column = 0;
        for (const char* name :
             {"graph", "notes", "problem", "remoteID", "savedFrom", "topic", "url", "stepsData"}) {
            if (std::optional<std::string> text = query.optionalString(column)) {
                attributes->emplace(name, std::move(*text));
            }
            ++column;
        }
        if (const std::optional<std::int64_t> flag = query.optionalInteger(column)) {
            attributes->emplace("isFavorite", *flag != 0);
        }
        for (const char* name : {"lastCached", "lastChange"}) {
            ++column;
            if (const std::optional<std::int64_t> moment = query.optionalInteger(column)) {
                attributes->emplace(name, Date(std::chrono::milliseconds(*moment)));
            }
        }
        return query.result();
    });
    return isRead ? std::move(attributes) : std::nullopt;
}

std::vector<std::string> NotebookEntryRepository::distinctTexts(std::string_view sql,
                                                                std::string_view message) const {
    std::vector<std::string> texts;
    const bool isRead = fetchAndWait({message}, [&](Database& database) {
        Statement query = database.statement(sql);
        while (query.nextRow()) {
            texts.emplace_back(query.text(0));
        }
        return query.result();
    });
    if (!isRead) {
        texts.clear();
    }
    return texts;
}

std::vector<std::string> NotebookEntryRepository::allTagStrings() const {
    return distinctTexts(distinctTags, "Could not fetch entry tags: ");
}

std::vector<std::string> NotebookEntryRepository::allTags() const {
    return distinctTexts(distinctTags, couldNotFetchEntries);
}

std::vector<std::string> NotebookEntryRepository::allTopics() const {
    return distinctTexts("SELECT DISTINCT topic FROM entries WHERE topic IS NOT NULL ORDER BY topic",
                         couldNotFetchEntries);
}

Filter NotebookEntryRepository::blankFilter() const try {
    Filter filter(
        [&platform = application_.platform()](std::string_view key) { return Localize(platform, key); });
    for (const std::string_view source : {Solutions, Practice, GraphingCalculator}) {
        filter.typeFilter.dict.emplace(source, false);
    }
    for (std::string& topic : allTopics()) {
        filter.topicFilter.dict.emplace(std::move(topic), false);
    }
    for (std::string& tag : allTags()) {
        filter.tagFilter.dict.emplace(std::move(tag), false);
    }
    return filter;
} catch (const std::bad_alloc&) {
    report({couldNotFetchEntries}, outOfMemoryError());
    return Filter();
}

} // namespace teralune
