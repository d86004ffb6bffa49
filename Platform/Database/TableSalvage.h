#pragma once

#include "Platform/Foundation/Result.h"

#include <cstdint>

namespace teralune {

class Database;

/// Copies, table by table, what can still be read of a damaged file (opened with Database::Access::salvage)
/// into the tables of the same names and columns of a whole one, inside the caller's transaction. A row that
/// is there already stays. Left out are tables that the damaged file lacks, rows on pages that can't be read,
/// rows that hold another type than their column, and texts that are no UTF-8, which only damage explains.
/// Each table of the whole file has its columns declared INTEGER or TEXT.
///
/// Works without the damaged file's indexes. Behind a page that can't be read it goes on from the other end
/// and halves what lies between, down to single keys. keySpan bounds that search: about as many keys as the
/// file can hold rows.
///
/// Fails, for the caller to give up, where the whole file can't be written and where memory runs out.
Result<void> salvageTables(Database& damaged, Database& whole, std::int64_t keySpan);

} // namespace teralune
