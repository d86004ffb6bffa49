#pragma once

#include "Classes/Interfaces/NotebookEntryRepositoryType.h"

#include <cstdint>
#include <vector>

namespace teralune {

/// How far the caching of steps has come. The job caches the newest note first, so a look at the first notes
/// that were not cached at the last count is enough.
class CacheProgress {
public:
    struct Count {
        std::int64_t notes = 0;
        std::int64_t cacheable = 0; ///< notes that are no graphs
        std::int64_t cached = 0;
    };

    explicit CacheProgress(const NotebookEntryRepositoryType& repository) : repository_(repository) {}

    /// The notes are read anew only when their number has changed.
    Count count();

private:
    const NotebookEntryRepositoryType& repository_;
    Count count_;
    std::vector<NotebookEntry> waiting_; ///< not cached at the last count, newest last
};

} // namespace teralune
