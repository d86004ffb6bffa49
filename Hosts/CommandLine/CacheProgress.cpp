#include "Hosts/CommandLine/CacheProgress.h"

#include "Classes/Model/CoreData/NotebookEntryRepository.h"

#include <algorithm>

namespace teralune {

CacheProgress::Count CacheProgress::count() {
    if (const std::int64_t notes = repository_.noteCount(); notes != count_.notes) {
        waiting_ = repository_.entriesForFilter(Filter());
        std::erase_if(waiting_, [](const NotebookEntry& note) {
            return note.savedFrom() == NotebookEntryRepository::GraphingCalculator;
        });
        count_ = {.notes = notes, .cacheable = static_cast<std::int64_t>(waiting_.size()), .cached = 0};
        std::reverse(waiting_.begin(), waiting_.end());
        // Notes that were cached by earlier runs lie anywhere in the list.
        count_.cached += static_cast<std::int64_t>(
            std::erase_if(waiting_, [](const NotebookEntry& note) { return note.lastCached().has_value(); }));
    }
    for (; !waiting_.empty() && waiting_.back().lastCached(); ++count_.cached)
        waiting_.pop_back();
    return count_;
}

} // namespace teralune
