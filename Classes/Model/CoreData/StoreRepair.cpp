#include "Classes/Model/CoreData/StoreRepair.h"

#include "Classes/Model/CoreData/DataController.h"
#include "Classes/Model/CoreData/ObjectModel.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Classes/Model/CoreData/StoreSalvage.h"
#include "Platform/Database/Database.h"
#include "Platform/Database/DatabaseError.h"
#include "Platform/Database/FileReplacement.h"
#include "Platform/Database/PrivateFile.h"
#include "Platform/Database/Transaction.h"

#include <new>
#include <system_error>
#include <utility>

namespace teralune {
namespace {

using std::filesystem::path;

Result<std::string> textOf(Database& database, std::string_view sql) {
    Statement query = database.statement(sql, Database::Reuse::once);
    std::string text;
    if (query.nextRow()) {
        text = query.optionalString(0).value_or("");
    }
    const Result<void> result = query.result();
    return result ? Result<std::string>(std::move(text)) : result.error();
}

/// None where the damaged file can't be read.
Result<std::optional<std::string>> textIfReadable(Database& damaged, std::string_view sql) {
    const Result<std::string> read = textOf(damaged, sql);
    if (!read && !isUnreadable(read.error())) {
        return read.error();
    }
    return read ? std::optional(read.value()) : std::nullopt;
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
    if (store.isReadOnly()) {
        return false;
    }
    const Result<std::int64_t> version = store.integer("PRAGMA user_version");
    if (!version) {
        return isUnreadable(version.error()) ? Result<bool>(false) : version.error();
    }
    const Result<Transaction> trial = Transaction::begin(draft, Transaction::Kind::writing);
    if (!trial) {
        return trial.error();
    }
    const bool isUnknown = version.value() < 0 || version.value() > ObjectModel::currentVersion;
    const std::int64_t last = isUnknown ? ObjectModel::currentVersion : version.value();
    for (std::int64_t step = 1; step <= last; ++step) {
        if (Result<void> taken = model.takeStep(draft, step); !taken) {
            return taken.error();
        }
    }
    const Result<std::optional<std::string>> found = textIfReadable(store, shape);
    const Result<std::string> expected = textOf(draft, shape);
    if (!found || !expected) {
        return !found ? found.error() : expected.error();
    }
    const bool isAsExpected = found.value() == expected.value();
    if (isUnknown && !isAsExpected) {
        return storeError(StoreErrorCode::newerStore, "The store was made by a newer version.");
    }
    // A newer version would have another shape, so here the number itself is what is damaged.
    if (isUnknown || !isAsExpected) {
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

/// Fills the draft. Of a healthy store there is none. An empty file is asked nothing, which would cost its
/// log.
Result<StoreRepairReport> fillDraft(Database& store, const path& file, const ObjectModel& model) {
    discardReplacementDraft(file);
    Result<Database> draft = StoreSalvage::openDraft(replacementDraft(file));
    if (!draft) {
        return draft.error();
    }
    StoreRepairReport report;
    const Result<std::int64_t> size = store.fileSize();
    if (!size) {
        return size.error();
    }
    const Result<bool> healthy =
        size.value() == 0 ? Result<bool>(false) : isHealthy(store, draft.value(), model);
    if (!healthy) {
        return healthy.error();
    }
    if (healthy.value()) {
        return report;
    }
    if (Result<void> saved = StoreSalvage(store, file, draft.value(), model).run(); !saved) {
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
    const bool isThere = std::filesystem::exists(file, unknown);
    if (Database::logSize(file) == 0) {
        if (!isThere) {
            return storeError(StoreErrorCode::noStore,
                              "There is no notebook store at " + file.string() + ".");
        }
        // As good as a missing one. Beside a log it is one that was lost.
        if (size == 0) {
            return StoreRepairReport{.damagedFile = finished.value()};
        }
    } else if (Result<void> made = isThere ? Result<void>() : makePrivateFile(file); !made) {
        return made.error();
    }
    // Held until the end: it is what keeps everybody else away.
    Result<Database> store = Database::open({.file = file, .access = Database::Access::salvage});
    if (!store) {
        return isLocked(store.error())
                   ? storeError(StoreErrorCode::storeInUse, "The notebook store is open elsewhere.")
                   : store.error();
    }
    Result<StoreRepairReport> report = fillDraft(store.value(), file, model.value());
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
    discardReplacementDraft(file);
    report.value().damagedFile = aside.value();
    return report;
} catch (const std::bad_alloc&) {
    return outOfMemoryError();
}

} // namespace teralune
