#pragma once

#include "Platform/Foundation/Result.h"

#include <cstdint>

namespace teralune {

class Database;

/// How far rows are looked for whose place in the file's trees is lost.
struct KeySearch {
    /// No row is expected beyond it.
    std::int64_t highestKey = 0;
    /// How many times the search may still meet with a page that can't be read. Each table takes half of what
    /// is left at most, so that none starves the others, and is read once in any case.
    std::int64_t attempts = 0;
};

struct SalvagedTables {
    bool hasAny = false;     ///< whether the damaged file has one of them
    bool hasAll = true;      ///< whether it has each of them, defined as in the whole one
    bool haveAllRows = true; ///< whether each has given at least one row
};

/// Copies, table by table, what can still be read of a damaged file (opened with Database::Access::salvage)
/// into the tables of the same names and columns of a whole one that are empty so far, inside the caller's
/// transaction. Left out are tables that the damaged file lacks, or has as a view, rows on pages that can't
/// be read, rows that hold another type than their column, and texts that are no UTF-8, which only damage
/// explains. Each table of the whole file has its columns declared INTEGER or TEXT, and keys from 1 on.
///
/// Works without the damaged file's indexes. Behind a page that can't be read it goes on from the other end
/// and halves what lies between, down to single keys if need be.
///
/// Fails, for the caller to give up, where the whole file can't be written and where memory runs out.
Result<SalvagedTables> salvageTables(Database& damaged, Database& whole, KeySearch& search);

} // namespace teralune
