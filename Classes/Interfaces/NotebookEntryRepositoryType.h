#pragma once

#include "Classes/Interfaces/NotebookEndpointsType.h"
#include "Classes/Model/CoreData/AttributeDictionary.h"
#include "Classes/Model/CoreData/Filter.h"
#include "Classes/Model/CoreData/NotebookEntry.h"

#include <boost/json/array.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace teralune {

/// The only way into the local notebook. Every operation may be called from any thread and returns when its
/// work is done; queries answer from the last saved state and do not wait for a refresh. None fails to its
/// caller: an error of the store is recorded with the crash reporter and printed, and the result is the empty
/// one.
class NotebookEntryRepositoryType {
public:
    virtual ~NotebookEntryRepositoryType() = default;

    /// Offers every tag, every topic and the three sources; nothing is chosen.
    virtual Filter blankFilter() const = 0;
    /// Makes the notebook what the server's list says, by the notes' identifiers. Cached steps of notes that
    /// remain are kept; a record that can't be used is passed over.
    virtual void insertNotebookEntries(const boost::json::array& entries) = 0;
    virtual void removeNotes(const std::vector<NotebookEntry>& notes) = 0;
    /// The newest problem whose steps are not cached and that is no graph; absent when there is none, or when
    /// the cache is full.
    virtual std::optional<std::string> nextEntryToCache() const = 0;
    /// Stores steps for every note of that problem.
    virtual void updateProblemWithSteps(const std::string& problem, const std::string& steps) = 0;
    /// All attributes of the first note of that problem: "graph", "isFavorite", "lastCached", "lastChange",
    /// "notes", "problem", "remoteID", "savedFrom", "stepsData", "topic", "url".
    virtual std::optional<AttributeDictionary> getNotebookEntry(const std::string& problem) const = 0;
    /// Deletes every note and every tag.
    virtual void clear() = 0;
    virtual bool exceededMaximumCachedEntries() const = 0;
    /// -1 when it can't be told.
    virtual std::int64_t noteCount() const = 0;
    /// Stars the first note of that problem, or takes its star. A problem that no note has is a fatal error.
    virtual void updateProblem(const std::string& query, Favorite favorite) = 0;
    /// The notes that a filter shows, newest first.
    virtual std::vector<NotebookEntry> entriesForFilter(const Filter& filter) const = 0;
    /// The attributes that a list holds from the start.
    virtual std::vector<std::string> notebookRequiredFields() const = 0;
    virtual std::vector<std::string> allTagStrings() const = 0;
};

} // namespace teralune
