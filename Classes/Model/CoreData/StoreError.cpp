#include "Classes/Model/CoreData/StoreError.h"

#include <utility>

namespace teralune {

Error storeError(StoreErrorCode code, std::string description) {
    return {"NotebookStore", static_cast<std::int64_t>(code), std::move(description), {}};
}

Error outOfMemoryError() noexcept {
    return storeError(StoreErrorCode::outOfMemory, "Out of memory.");
}

} // namespace teralune
