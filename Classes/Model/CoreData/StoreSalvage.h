#pragma once

#include "Platform/Database/Database.h"
#include "Platform/Database/FirstPage.h"
#include "Platform/Database/TableSalvage.h"
#include "Platform/Foundation/Result.h"

#include <filesystem>
#include <optional>

namespace teralune {

class ObjectModel;

/// Brings into a new store what can be read of a damaged one. For a repair, which owns both.
class StoreSalvage {
public:
    /// A new file without a log: when it is closed it is either whole and on disk, or nothing.
    static Result<Database> openDraft(const std::filesystem::path& file);

    /// The store was opened with Database::Access::salvage, the draft by openDraft() beside it.
    StoreSalvage(Database& store, std::filesystem::path file, Database& draft, const ObjectModel& model);

    /// Takes the steps of the schema one by one, each followed by the rows of those of its tables that the
    /// damaged store has: an older store's rows then climb with the schema. The version that the store says
    /// it has need not be readable for that. A failure leaves an empty draft.
    Result<void> run();

private:
    Database& source() { return copy_ ? *copy_ : store_; }
    /// Asks for the list of tables, and from then on passes over what can't be read of it. Returns whether
    /// all of it could be read.
    Result<bool> readList(Database& database);
    Result<void> readCopyWith(const FirstPage& firstPage, FirstPage::Part part);
    Result<void> saveRows();
    /// Where the list of tables is damaged, and not another program's, most stores still have their tables at
    /// the places of a new one. Beside a damaged list a table without rows may be one whose place is wrong.
    /// If the disk has no room for that, what was saved so far is what there is, unless it is no note at all.
    Result<void> saveWhatTheSchemaHides(const FirstPage& firstPage);

    Database& store_;
    const std::filesystem::path file_;
    Database& draft_;
    const ObjectModel& model_;
    /// Read in place of the store once its first page has turned out to be damaged.
    std::optional<Database> copy_;
    /// For all tables and steps together, so that the time that a repair takes is bounded.
    KeySearch search_;
    /// Whether the file may have the store's tables, whether their list can be read as a whole, and whether
    /// no other place need be looked at.
    bool isStore_ = false;
    bool isListSound_ = false;
    bool isComplete_ = false;
};

} // namespace teralune
