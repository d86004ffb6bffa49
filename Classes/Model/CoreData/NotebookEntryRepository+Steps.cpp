#include "Classes/Interfaces/IApplication.h"
#include "Classes/Model/CoreData/NotebookEntryRepository.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Platform/Database/Database.h"

#include <utility>

namespace teralune {

std::optional<std::string> NotebookEntryRepository::nextEntryToCache() const {
    if (exceededMaximumCachedEntries()) {
        return std::nullopt;
    }
    std::optional<std::string> problem;
    const bool isRead = fetchAndWait({couldNotFetchEntries}, [&](Database& database) -> Result<void> {
        // The two conditions are those of the index "entriesToCache", word for word, so that its last entry
        // is the answer. A note without a source is no graph.
        Statement newest = database.statement("SELECT problem FROM entries "
                                              "WHERE isCached = 0 AND savedFrom IS NOT 'Graphing Calculator' "
                                              "ORDER BY lastChange DESC, id DESC LIMIT 1");
        if (newest.nextRow()) {
            problem = newest.optionalString(0);
        }
        return newest.result();
    });
    return isRead ? std::move(problem) : std::nullopt;
}

void NotebookEntryRepository::updateProblemWithSteps(const std::string& problem, const std::string& steps) {
    const std::int64_t now = application_.platform().clock->now().time_since_epoch().count();
    const Words message{"Could not fetch or save notebook entry to update for ", problem, ": "};
    performAndWait(message, [&](Database& database) -> Result<void> {
        Result<void> written =
            database
                .statement("INSERT INTO steps(entryID, lastCached, stepsData) "
                           "SELECT id, ?1, ?2 FROM entries WHERE problem = ?3 "
                           "ON CONFLICT(entryID) DO UPDATE SET lastCached = excluded.lastCached, "
                           "stepsData = excluded.stepsData")
                .bindAll(now, steps, problem)
                .run();
        if (!written) {
            return written;
        }
        return database.statement("UPDATE entries SET isCached = 1 WHERE problem = ? AND isCached = 0")
            .bindAll(problem)
            .run();
    });
}

std::int64_t NotebookEntryRepository::count(Counted counted) const {
    std::int64_t number = -1;
    const Words message{"Could not count notebook entries: "};
    const bool isRead = fetchAndWait(message, [&](Database& database) -> Result<void> {
        const Result<std::int64_t> rows =
            database.integer(counted == Counted::entries ? "SELECT count(*) FROM entries"
                                                         : "SELECT value FROM stepsCount WHERE id = 0");
        if (!rows) {
            return rows.error();
        }
        number = rows.value();
        return {};
    });
    if (!isRead) {
        return -1;
    }
    print({"Count found ", std::to_string(number), " notes."});
    return number;
}

bool NotebookEntryRepository::exceededMaximumCachedEntries() const {
    return count(Counted::entriesWithSteps) > maximumEntryCountHardLimit;
}

std::int64_t NotebookEntryRepository::noteCount() const {
    return count(Counted::entries);
}

} // namespace teralune
