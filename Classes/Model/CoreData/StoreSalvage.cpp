#include "Classes/Model/CoreData/StoreSalvage.h"

#include "Classes/Model/CoreData/ObjectModel.h"
#include "Platform/Database/DatabaseError.h"
#include "Platform/Database/FileReplacement.h"
#include "Platform/Database/TableSalvage.h"
#include "Platform/Database/Transaction.h"

#include <algorithm>
#include <utility>

namespace teralune {
namespace {

using std::filesystem::path;

/// A row with its places in the indexes hardly takes less than 64 bytes, and of more than a million keys that
/// lead nowhere the search would take longer than it is worth. The highest number given out may be damaged
/// itself.
Result<KeySearch> keySearch(Database& damaged, std::uintmax_t size) {
    constexpr std::uintmax_t bytesPerRow = 64;
    constexpr std::uintmax_t mostKeys = 1'000'000;
    const Result<std::int64_t> highest = damaged.integer("SELECT max(seq) FROM sqlite_sequence");
    if (!highest && !isUnreadable(highest.error())) {
        return highest.error();
    }
    const auto rows = static_cast<std::int64_t>(std::min(size / bytesPerRow, mostKeys));
    return KeySearch{.highestKey = std::max(rows, highest ? highest.value() : 0), .attempts = 2 * rows};
}

/// The first page of a new store, for which the scratch file is used.
Result<FirstPage> firstPageOfNewStore(const path& file, const ObjectModel& model) {
    Result<Database> made = StoreSalvage::openDraft(replacementScratch(file));
    if (!made) {
        return made.error();
    }
    if (Result<void> migrated = model.migrate(made.value()); !migrated) {
        return migrated.error();
    }
    return FirstPage::of(replacementScratch(file));
}

} // namespace

Result<Database> StoreSalvage::openDraft(const path& file) {
    Result<Database> draft = Database::open({.file = file});
    if (draft) {
        const Result<void> set = draft.value().execute(
            "PRAGMA journal_mode=MEMORY; PRAGMA synchronous=FULL; PRAGMA foreign_keys=OFF");
        return set ? std::move(draft) : set.error();
    }
    return draft;
}

StoreSalvage::StoreSalvage(Database& store, path file, Database& draft, const ObjectModel& model)
    : store_(store)
    , file_(std::move(file))
    , draft_(draft)
    , model_(model) {}

Result<void> StoreSalvage::run() {
    const Result<FirstPage> firstPage = firstPageOfNewStore(file_, model_);
    if (!firstPage) {
        return firstPage.error();
    }
    Result<void> done;
    // A list of tables that can be read tells another program's database by its tables.
    const Result<std::int64_t> objects = store_.integer("SELECT count(*) FROM sqlite_schema");
    if (!objects && !isUnreadable(objects.error())) {
        return objects.error();
    }
    isStore_ = !objects;
    store_.passOverDamage();
    if (!firstPage.value().hasSameHeader(file_)) {
        done = readCopyWith(firstPage.value(), FirstPage::Part::header);
    }
    Result<Transaction> transaction = Transaction::begin(draft_, Transaction::Kind::writing);
    if (!transaction) {
        return transaction.error();
    }
    for (std::int64_t step = 1; step <= ObjectModel::currentVersion && done; ++step) {
        done = model_.takeStep(draft_, step);
        if (done) {
            done = saveRows();
        }
    }
    if (done) {
        done = saveWhatTheSchemaHides(firstPage.value());
    }
    if (done) {
        // What refers to a row that is lost, and what an entry says of steps that are.
        done = draft_.execute("DELETE FROM steps WHERE entryID NOT IN (SELECT id FROM entries);"
                              "DELETE FROM links WHERE entryID NOT IN (SELECT id FROM entries)"
                              " OR tagID NOT IN (SELECT id FROM tags);"
                              "UPDATE entries SET isCached = "
                              "EXISTS(SELECT 1 FROM steps WHERE entryID = id AND lastCached IS NOT NULL)");
    }
    return done ? transaction.value().commit() : done;
}

Result<void> StoreSalvage::readCopyWith(const FirstPage& firstPage, FirstPage::Part part) {
    copy_.reset();
    const path scratch = replacementScratch(file_);
    if (Result<void> copied = firstPage.copyWith(part, file_, scratch); !copied) {
        return copied;
    }
    Result<Database> opened = Database::open({.file = scratch, .access = Database::Access::salvage});
    if (!opened) {
        return opened.error();
    }
    copy_ = std::move(opened).value();
    copy_->passOverDamage();
    return {};
}

Result<void> StoreSalvage::saveRows() {
    const Result<KeySearch> search = keySearch(source(), std::filesystem::file_size(file_));
    if (!search) {
        return search.error();
    }
    const Result<SalvagedTables> tables = salvageTables(source(), draft_, search.value());
    if (!tables) {
        return tables.error();
    }
    isStore_ |= tables.value().hasAny;
    isComplete_ |= tables.value().haveAllRows;
    return {};
}

Result<void> StoreSalvage::saveWhatTheSchemaHides(const FirstPage& firstPage) {
    if (isComplete_ || !isStore_) {
        return {};
    }
    Result<void> opened = readCopyWith(firstPage, FirstPage::Part::page);
    return opened ? saveRows() : opened;
}

} // namespace teralune
