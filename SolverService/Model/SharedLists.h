#pragma once

#include "SolverService/Model/NoteRecord.h"
#include "SolverService/Model/Notebook.h"
#include "SolverService/Model/ServerModel.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace teralune::service {

/// A list of notes that someone shared under an identifier.
struct SharedList {
    std::string name;
    std::vector<NoteRecord> notes;
};

enum class ListSaving { saved, limitReached, noSuchList };

/// The shared lists, and who has taken which into the own notebook. Used from any thread.
class SharedLists {
public:
    SharedLists(ServerModel& model, Notebook& notebook, std::int64_t savedLimit)
        : model_(model)
        , notebook_(notebook)
        , savedLimit_(savedLimit) {}

    /// Shares the notes; the identifier of the list.
    std::string share(const std::string& name, std::span<const NoteRecord> notes);
    std::optional<SharedList> list(const std::string& identifier);

    /// Adds the list's notes to the user's notebook, tagged with the list's name. Saving a list again
    /// brings back what is missing and does not count against the limit.
    ListSaving save(const std::string& identifier, std::int64_t account);

private:
    ServerModel& model_;
    Notebook& notebook_;
    std::int64_t savedLimit_;
};

} // namespace teralune::service
