#include "SolverService/Model/NoteRecord.h"

#include "SolverService/Model/UtcText.h"

#include <boost/json.hpp>

namespace teralune::service {

boost::json::object jsonRecord(const NoteRecord& note) {
    boost::json::value graph;
    if (note.graph) {
        boost::system::error_code problem;
        graph = boost::json::parse(*note.graph, problem);
        if (problem) {
            graph = *note.graph;
        }
    }
    return {
        {"_id", note.remoteID},
        {"problem", note.problem},
        {"savedFrom", note.savedFrom},
        {"lastChange", std::to_string(note.lastChange * 1000)},
        {"date", noteTime(note.lastChange)},
        {"isFavorite", note.isFavorite},
        {"topic", note.topic},
        {"notes", note.notes},
        {"graph", std::move(graph)},
        {"url", note.url ? boost::json::value(*note.url) : boost::json::value()},
        {"tags", boost::json::value_from(note.tags)},
    };
}

} // namespace teralune::service
