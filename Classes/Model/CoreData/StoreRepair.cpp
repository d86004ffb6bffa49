#include "Classes/Model/CoreData/StoreRepair.h"

#include "Classes/Model/CoreData/DataController.h"
#include "Classes/Model/CoreData/ObjectModel.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Platform/Database/Database.h"
#include "Platform/Database/DatabaseError.h"
#include "Platform/Database/FileReplacement.h"
#include "Platform/Database/TableSalvage.h"
#include "Platform/Database/Transaction.h"

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

namespace teralune {
namespace {

using std::filesystem::path;

/// No row takes less, and beyond this many keys a search would take longer than is worth it.
constexpr std::int64_t bytesPerRow = 8;
constexpr std::int64_t mostKeysToTry = 1'000'000;

/// The text that the query gives, or none where the file can't be read.
Result<std::optional<std::string>> textIfReadable(Database& database, std::string_view sql) {
    Statement query = database.statement(sql, Database::Reuse::once);
    std::optional<std::string> text;
    if (query.nextRow()) {
        text = query.optionalString(0).value_or("");
    }
    const Result<void> result = query.result();
    if (!result && !isUnreadable(result.error())) {
        return result.error();
    }
    return result ? text : std::nullopt;
}

/// Each table, index and column by its name, so that a store that lacks one is told from one that is whole.
constexpr std::string_view shape =
    "SELECT group_concat(line, char(10)) FROM (SELECT type || ' ' || name AS line FROM sqlite_schema UNION "
    "ALL "
    "SELECT t.name || '.' || c.name || ' ' || c.type FROM sqlite_schema AS t, pragma_table_info(t.name) AS c "
    "WHERE t.type = 'table' ORDER BY 1)";

/// Whether the store can be opened and worked with as it is. The draft is a new file.
Result<bool> isHealthy(Database& store, Database& draft, const ObjectModel& model) {
    for (const char* check :
         {"PRAGMA integrity_check(1)", "SELECT iif(count(*) = 0, 'ok', '') FROM pragma_foreign_key_check"}) {
        const Result<std::optional<std::string>> answer = textIfReadable(store, check);
        if (!answer) {
            return answer.error();
        }
        if (answer.value() != "ok") {
            return false;
        }
    }
    const Result<std::int64_t> version = store.integer("PRAGMA user_version");
    if (!version) {
        return isUnreadable(version.error()) ? Result<bool>(false) : version.error();
    }
    if (version.value() > ObjectModel::currentVersion) {
        return storeError(StoreErrorCode::newerStore, "The store was made by a newer version.");
    }
    const Result<Transaction> trial = Transaction::begin(draft, Transaction::Kind::writing);
    if (!trial) {
        return trial.error();
    }
    for (std::int64_t step = 1; step <= version.value(); ++step) {
        if (Result<void> taken = model.takeStep(draft, step); !taken) {
            return taken.error();
        }
    }
    const Result<std::optional<std::string>> found = textIfReadable(store, shape);
    const Result<std::optional<std::string>> expected = textIfReadable(draft, shape);
    if (!found || !expected) {
        return !found ? found.error() : expected.error();
    }
    if (!found.value() || found.value() != expected.value()) {
        return false;
    }
    // The one number that SQLite's own checks don't compare with what it counts. Older stores have none.
    if (found.value()->find("table stepsCount") == std::string::npos) {
        return true;
    }
    const Result<std::optional<std::string>> counted =
        textIfReadable(store, "SELECT iif(value = (SELECT count(*) FROM steps), 'ok', '') FROM stepsCount");
    return counted ? Result<bool>(counted.value() == "ok") : counted.error();
}

/// Takes the steps of the schema one by one, each followed by the rows of those of its tables that the
/// damaged store has: an older store's rows then climb with the schema. The version that the store says it
/// has need not be readable for that.
Result<void> save(Database& damaged, Database& draft, const ObjectModel& model, std::int64_t keySpan) {
    Result<Transaction> transaction = Transaction::begin(draft, Transaction::Kind::writing);
    if (!transaction) {
        return transaction.error();
    }
    for (std::int64_t step = 1; step <= ObjectModel::currentVersion; ++step) {
        Result<void> taken = model.takeStep(draft, step);
        if (taken) {
            taken = salvageTables(damaged, draft, keySpan);
        }
        if (!taken) {
            return taken;
        }
    }
    // What refers to a row that is lost, and what an entry says of steps that are.
    Result<void> tidied =
        draft.execute("DELETE FROM steps WHERE entryID NOT IN (SELECT id FROM entries);"
                      "DELETE FROM links WHERE entryID NOT IN (SELECT id FROM entries)"
                      " OR tagID NOT IN (SELECT id FROM tags);"
                      "UPDATE entries SET isCached = "
                      "EXISTS(SELECT 1 FROM steps WHERE entryID = id AND lastCached IS NOT NULL)");
    return tidied ? transaction.value().commit() : tidied;
}

/// A draft has no log: it is either whole and on disk, or nothing.
Result<Database> openDraft(const path& file) {
    discardReplacementDraft(file);
    Result<Database> draft = Database::open({.file = replacementDraft(file)});
    if (draft) {
        const Result<void> set = draft.value().execute(
            "PRAGMA journal_mode=MEMORY; PRAGMA synchronous=FULL; PRAGMA foreign_keys=OFF");
        return set ? std::move(draft) : set.error();
    }
    return draft;
}

/// Fills the draft. Of a healthy store there is none.
Result<StoreRepairReport> fillDraft(Database& store, const path& file, const ObjectModel& model,
                                    std::uintmax_t size) {
    Result<Database> draft = openDraft(file);
    if (!draft) {
        return draft.error();
    }
    StoreRepairReport report;
    const Result<bool> healthy = isHealthy(store, draft.value(), model);
    if (!healthy) {
        return healthy.error();
    }
    if (healthy.value()) {
        return report;
    }
    const std::uintmax_t rows = size / bytesPerRow;
    const std::int64_t keySpan = rows > mostKeysToTry ? mostKeysToTry : static_cast<std::int64_t>(rows);
    if (Result<void> saved = save(store, draft.value(), model, keySpan); !saved) {
        return saved.error();
    }
    const Result<std::int64_t> notes = draft.value().integer("SELECT count(*) FROM entries");
    const Result<std::int64_t> steps = draft.value().integer("SELECT count(*) FROM steps");
    if (!notes || !steps) {
        return !notes ? notes.error() : steps.error();
    }
    report.outcome = StoreRepairReport::Outcome::repaired;
    report.notes = notes.value();
    report.steps = steps.value();
    return report;
}

} // namespace

Result<StoreRepairReport> repairStore(const PlatformServices::Locations& locations) try {
    const path file = locations.dataFolder / DataController::storeFileName;
    const Result<ObjectModel> model = ObjectModel::load(locations.libraryBundleFolder / "DataModel.momd");
    if (!model) {
        return model.error();
    }
    const Result<std::optional<path>> finished = finishReplacement(file);
    if (!finished) {
        return finished.error();
    }
    std::error_code unknown;
    const std::uintmax_t size = std::filesystem::file_size(file, unknown);
    if (!std::filesystem::exists(file, unknown)) {
        return storeError(StoreErrorCode::noStore, "There is no notebook store at " + file.string() + ".");
    }
    if (size == 0) {
        // As good as a missing one; and SQLite would remove a log that lies beside it.
        return StoreRepairReport{.damagedFile = finished.value()};
    }
    // Held until the end: it is what keeps everybody else away.
    Result<Database> store = Database::open({.file = file, .access = Database::Access::salvage});
    if (!store) {
        return isLocked(store.error())
                   ? storeError(StoreErrorCode::storeInUse, "The notebook store is open elsewhere.")
                   : store.error();
    }
    Result<StoreRepairReport> report = fillDraft(store.value(), file, model.value(), size);
    if (!report || report.value().outcome == StoreRepairReport::Outcome::healthy) {
        discardReplacementDraft(file);
        if (report) {
            report.value().damagedFile = finished.value();
        }
        return report;
    }
    const Result<path> aside = replaceByDraft(file);
    if (!aside) {
        return aside.error();
    }
    report.value().damagedFile = aside.value();
    return report;
} catch (const std::bad_alloc&) {
    return outOfMemoryError();
} catch (const std::filesystem::filesystem_error& error) {
    return systemError(error.code().value(), error.path1());
}

} // namespace teralune
