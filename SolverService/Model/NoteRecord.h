#pragma once

#include <boost/json/fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace teralune::service {

/// One note of a notebook or of a shared list.
struct NoteRecord {
    /// Given by the notebook when the note is added.
    std::string remoteID;
    std::string problem;
    /// "Solutions", "Graphing Calculator" or "Practice".
    std::string savedFrom = "Solutions";
    std::string topic;
    std::string notes;
    std::vector<std::string> tags;
    bool isFavorite = false;
    /// Seconds since 1970, UTC.
    std::int64_t lastChange = 0;
    std::optional<std::string> url;
    /// The graph definition, as JSON text.
    std::optional<std::string> graph;
    std::optional<std::string> graphID;
};

/// The record as the notebook endpoints send it. A graph goes out as the object it is; what is absent
/// goes out as null.
boost::json::object jsonRecord(const NoteRecord& note);

} // namespace teralune::service
