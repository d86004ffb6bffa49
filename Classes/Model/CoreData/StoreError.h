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
};

/// An error of the domain "NotebookStoreErrorDomain".
Error storeError(StoreErrorCode code, std::string description);

} // namespace teralune
