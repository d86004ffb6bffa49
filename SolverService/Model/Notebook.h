#pragma once

#include "SolverService/Model/NoteRecord.h"
#include "SolverService/Model/ServerModel.h"

#include <span>
#include <string>
#include <vector>

namespace teralune::service {

/// The notebooks of all users. A user has at most one note of a problem. Used from any thread.
class Notebook {
public:
    explicit Notebook(ServerModel& model) : model_(model) {}

    bool hasNotes(std::int64_t account);
    /// Newest change first.
    std::vector<NoteRecord> notes(std::int64_t account);

    /// Adds the notes, all or none. One whose problem is there already takes that note's place and keeps
    /// its identifier, favourite mark, remarks and tags. A lastChange of 0 means now.
    void add(std::int64_t account, std::span<const NoteRecord> notes);

    /// The three changes: false when the user has no note of that problem.
    bool setFavorite(std::int64_t account, const std::string& problem, bool favorite);
    bool setNotes(std::int64_t account, const std::string& problem, const std::string& text);
    bool setTags(std::int64_t account, const std::string& problem, const std::vector<std::string>& tags);

    /// The note with that graph identifier, or absent.
    std::optional<NoteRecord> graph(std::int64_t account, const std::string& graphID);

    /// Problems without a note are passed over.
    void remove(std::int64_t account, std::span<const std::string> problems);
    void clear(std::int64_t account);

private:
    ServerModel& model_;
};

} // namespace teralune::service
