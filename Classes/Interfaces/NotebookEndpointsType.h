#pragma once

#include "Platform/Foundation/UniqueFunction.h"
#include "Platform/Tasks/Task.h"

#include <boost/json/array.hpp>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace teralune {

struct NotebookEntriesReply {
    bool success = false;
    boost::json::array entries; ///< note records; empty after a failure
};

struct SaveGraphReply {
    bool success = false;
    std::optional<std::string> response; ///< the server's "response" text
    std::optional<std::string> graph;    ///< the server's "graph": its text, or its JSON written compactly
};

struct PreviewNotesReply {
    bool success = false;
    std::optional<boost::json::array> notes;
    std::optional<std::string> name; ///< the list's title
};

/// How adding a shared list ended. The server refuses a list too many: then success is false and limitReached
/// true.
struct SavePreviewNotesReply {
    bool success = false;
    bool limitReached = false;
};

/// Labels that tell the three forms of updateNote apart.
struct Favorite {
    bool value = false;
};
struct Notes {
    std::string value;
};

/// A note's tags after a change, and what the change was.
struct TagChange {
    std::set<std::string> tags;
    std::set<std::string> tagsRemoved;
    std::set<std::string> tagsAdded;
};

/// The notebook on the server. Each operation may be called from any thread; completions run exactly once, on
/// the main queue, with false on any failure. The local store is not touched here.
///
/// A change that succeeds posts UserUpdatedNoteNotification before its completion runs.
class NotebookEndpointsType {
public:
    virtual ~NotebookEndpointsType() = default;

    virtual void hasWebNotes(UniqueFunction<void(bool)> completion) = 0;
    virtual void getNotebookEntries(UniqueFunction<void(NotebookEntriesReply)> completion) = 0;
    /// A shared list; needs no sign-in.
    virtual void loadPreviewNotes(const std::string& listID,
                                  UniqueFunction<void(PreviewNotesReply)> completion) = 0;
    /// Adds a shared list to the user's notebook.
    virtual void savePreviewNotes(const std::string& listID,
                                  UniqueFunction<void(SavePreviewNotesReply)> completion) = 0;
    virtual void saveNote(const std::string& query, const std::string& topic, const std::string& savedFrom,
                          UniqueFunction<void(bool)> completion) = 0;
    /// A graph note; graphJson is its definition as JSON text, and without an identifier a new note is made.
    virtual void saveGraph(const std::optional<std::string>& graphId, const std::string& graphJson,
                           UniqueFunction<void(SaveGraphReply)> completion) = 0;
    virtual void removeNote(const std::string& query, UniqueFunction<void(bool)> completion) = 0;
    /// All in one request.
    virtual void removeNotes(const std::vector<std::string>& queries,
                             UniqueFunction<void(bool)> completion) = 0;
    virtual void updateNote(Favorite favorite, const std::string& problem,
                            UniqueFunction<void(bool)> completion) = 0;
    virtual void updateNote(const Notes& notes, const std::string& problem,
                            UniqueFunction<void(bool)> completion) = 0;
    virtual Task<void> updateNote(const TagChange& change, const std::string& problem) = 0;
    virtual Task<void> clearNotebook() = 0;
};

} // namespace teralune
