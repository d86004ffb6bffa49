#pragma once

#include "Platform/Foundation/Error.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace teralune {

class CrashReporterType;
class Printer;

/// What can be wrong with the notebook store beyond what SQLite itself reports.
enum class StoreErrorCode : std::int64_t {
    unreadableModel = 1,
    newerStore,
    foreignFile,
    noStore,
    outOfMemory = 6,
    transactionLost,
    storeInUse,
    noNote,
};

/// An error of the domain "NotebookStore".
Error storeError(StoreErrorCode code, std::string description);
/// Takes no memory of its own: its texts are short enough to lie within the strings.
Error outOfMemoryError() noexcept;

/// Prints a line of these words. One for which there is no memory is left out: nothing depends on it.
void printStoreLine(Printer& printer, std::initializer_list<std::string_view> words);
/// Records the error, and prints it behind these words.
void reportStoreError(CrashReporterType& crashReporter, Printer& printer,
                      std::initializer_list<std::string_view> message, const Error& error);

} // namespace teralune
