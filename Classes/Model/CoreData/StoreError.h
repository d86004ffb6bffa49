#pragma once

#include "Platform/Foundation/Error.h"

#include <cstdint>
#include <string>

namespace teralune {

/// What can be wrong with the notebook store beyond what SQLite itself reports.
enum class StoreErrorCode : std::int64_t {
    unreadableModel = 1,
    newerStore,
    foreignFile,
    noStore,
    noDocumentsDirectory,
    outOfMemory,
    transactionLost,
    storeInUse,
};

/// An error of the domain "NotebookStore".
Error storeError(StoreErrorCode code, std::string description);
/// Takes no memory of its own: its texts are short enough to lie within the strings.
Error outOfMemoryError() noexcept;

} // namespace teralune
