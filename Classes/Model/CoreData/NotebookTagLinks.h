#pragma once

#include "Platform/Foundation/Result.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace teralune {

class CrashReporterType;
class Database;
class ObjectContext;

/// Puts tags on one stored note and takes them off. Used inside a performAndWait() block and for its duration
/// only.
class NotebookTagLinks {
public:
    NotebookTagLinks(Database& database, ObjectContext& context, CrashReporterType& crashReporter)
        : database_(database)
        , context_(context)
        , crashReporter_(crashReporter) {}

    /// Shares a tag that exists and makes one that does not. A tag whose look-up fails is recorded, printed
    /// and left out; onAdded is told of each that the note bears now. A note that was deleted gets none.
    Result<void> add(std::int64_t entryID, const std::vector<std::string>& tags,
                     const std::function<void(const std::string&)>& onAdded);
    Result<void> remove(std::int64_t entryID, const std::vector<std::string>& tags);

private:
    Database& database_;
    ObjectContext& context_;
    CrashReporterType& crashReporter_;
};

} // namespace teralune
