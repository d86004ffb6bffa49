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

/// A row with its places in the indexes hardly takes less than 64 bytes, and of more than half a million keys
/// that lead nowhere the search would take longer than it is worth.
std::int64_t expectedRows(std::uintmax_t size) {
    constexpr std::uintmax_t bytesPerRow = 64;
    constexpr std::uintmax_t mostKeys = 500'000;
    return static_cast<std::int64_t>(std::min(size / bytesPerRow, mostKeys));
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
    const Result<std::int64_t> size = store_.fileSize();
    if (!size) {
        return size.error();
    }
    const std::int64_t rows =
        expectedRows(static_cast<std::uintmax_t>(size.value()) + Database::logSize(file_));
    search_ = {.highestKey = rows, .attempts = 2 * rows};
    // A list of tables that can be read tells another program's database by its tables. Asked for the list of
    // an empty file, SQLite would remove the log beside it.
    const Result<bool> isReadable = size.value() == 0 ? Result<bool>(false) : readList(store_);
    if (!isReadable) {
        return isReadable.error();
    }
    isStore_ = !isReadable.value();
    Result<void> done;
    if (!firstPage.value().hasSameHeader(store_)) {
        done = readCopyWith(firstPage.value(), FirstPage::Part::header);
    }
    if (!done) {
        return done;
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

Result<bool> StoreSalvage::readList(Database& database) {
    // Two tables or indexes at the same place are damage too.
    const Result<std::int64_t> list =
        database.integer("SELECT count(*) = count(DISTINCT rootpage) FROM sqlite_schema WHERE rootpage > 0");
    if (!list && !isUnreadable(list.error())) {
        return list.error();
    }
    database.passOverDamage();
    isListSound_ = list && list.value() == 1;
    return list.succeeded();
}

Result<void> StoreSalvage::readCopyWith(const FirstPage& firstPage, FirstPage::Part part) {
    copy_.reset();
    const path scratch = replacementScratch(file_);
    if (Result<void> copied = firstPage.copyWith(part, store_, file_, scratch); !copied) {
        return copied;
    }
    Result<Database> opened = Database::open({.file = scratch, .access = Database::Access::salvage});
    if (!opened) {
        return opened.error();
    }
    copy_ = std::move(opened).value();
    const Result<bool> isReadable = readList(*copy_);
    return isReadable ? Result<void>() : isReadable.error();
}

Result<void> StoreSalvage::saveRows() {
    // The highest number given out may be damaged itself.
    const Result<std::int64_t> highest = source().integer("SELECT max(seq) FROM sqlite_sequence");
    if (!highest && !isUnreadable(highest.error())) {
        return highest.error();
    }
    search_.highestKey = std::max(search_.highestKey, highest ? highest.value() : 0);
    const Result<SalvagedTables> tables = salvageTables(source(), draft_, search_);
    if (!tables) {
        return tables.error();
    }
    isStore_ |= tables.value().hasAny;
    isComplete_ |= isListSound_ ? tables.value().hasAll : tables.value().haveAllRows;
    return {};
}

Result<void> StoreSalvage::saveWhatTheSchemaHides(const FirstPage& firstPage) {
    if (isComplete_ || !isStore_) {
        return {};
    }
    const Result<void> opened = readCopyWith(firstPage, FirstPage::Part::page);
    if (opened) {
        return saveRows();
    }
    const Result<std::int64_t> hasNotes = draft_.integer("SELECT EXISTS(SELECT 1 FROM entries)");
    return isFull(opened.error()) && hasNotes && hasNotes.value() != 0 ? Result<void>() : opened;
}

} // namespace teralune
