#include "Classes/Model/CoreData/StoreError.h"

#include <utility>

namespace teralune {

Error storeError(StoreErrorCode code, std::string description) {
    return {"NotebookStoreErrorDomain", static_cast<std::int64_t>(code), std::move(description), {}};
}

} // namespace teralune
