#include "Classes/Model/CoreData/StoreError.h"

#include "Classes/Interfaces/CrashReporterType.h"
#include "Platform/Foundation/Printer.h"

#include <new>
#include <utility>

namespace teralune {
namespace {

std::string joined(std::initializer_list<std::string_view> words) {
    std::string line;
    for (const std::string_view word : words) {
        line += word;
    }
    return line;
}

} // namespace

Error storeError(StoreErrorCode code, std::string description) {
    return {"NotebookStore", static_cast<std::int64_t>(code), std::move(description), {}};
}

Error outOfMemoryError() noexcept {
    return storeError(StoreErrorCode::outOfMemory, "Out of memory.");
}

void printStoreLine(Printer& printer, std::initializer_list<std::string_view> words) try {
    printer.print(joined(words));
} catch (const std::bad_alloc&) {
    return;
}

void reportStoreError(CrashReporterType& crashReporter, Printer& printer,
                      std::initializer_list<std::string_view> message, const Error& error) try {
    crashReporter.recordError(error);
    printer.print(joined(message) + error.localizedDescription);
} catch (const std::bad_alloc&) {
    // There is nobody else to tell.
    return;
}

} // namespace teralune
