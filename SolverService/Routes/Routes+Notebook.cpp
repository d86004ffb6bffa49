#include "SolverService/Http/Router.h"
#include "SolverService/Model/Notebook.h"
#include "SolverService/Model/RandomText.h"
#include "SolverService/Model/SharedLists.h"
#include "SolverService/Routes/Routes.h"

#include <boost/json.hpp>

#include <algorithm>
#include <string_view>

namespace teralune::service {

namespace {

constexpr int graphIdentifierBytes = 12;

/// The non-empty items of a joined list, each once, in their order.
std::vector<std::string> itemsOf(std::string_view joined, char separator) {
    std::vector<std::string> items;
    while (!joined.empty()) {
        const std::string_view item = joined.substr(0, joined.find(separator));
        joined.remove_prefix(std::min(joined.size(), item.size() + 1));
        if (!item.empty() && std::find(items.begin(), items.end(), item) == items.end()) {
            items.emplace_back(item);
        }
    }
    return items;
}

ServiceReply accepted(bool found) {
    return found ? ServiceReply::json({{"response", "saved"}}) : ServiceReply::refusal(404, "No such note");
}

/// What a graph is called in the notebook: its own name, or else its first function.
std::string nameOf(const boost::json::object& graph, const std::string& graphID) {
    if (const auto* name = graph.if_contains("name"); name != nullptr && name->is_string()) {
        return boost::json::value_to<std::string>(*name);
    }
    if (const auto* functions = graph.if_contains("functions");
        functions != nullptr && functions->is_array() && !functions->get_array().empty() &&
        functions->get_array().front().is_string()) {
        return boost::json::value_to<std::string>(functions->get_array().front());
    }
    return "Graph " + graphID;
}

} // namespace

void Routes::enterNotebook(Router& router) {
    router.get("/api/hasWebNotes", Access::signedIn, [this](const auto&, const auto& caller) {
        return ServiceReply::text(model_.notebook.hasNotes(*caller.account) ? "true" : "false");
    });
    router.get("/api/notebookEntriesForMobileAll", Access::signedIn, [this](const auto&, const auto& caller) {
        boost::json::array records;
        for (const NoteRecord& note : model_.notebook.notes(*caller.account)) {
            records.push_back(jsonRecord(note));
        }
        return ServiceReply::json(std::move(records));
    });
    router.post("/api/notebook/addNote", Access::signedIn, [this](const auto& request, const auto& caller) {
        return addNote(request, *caller.account);
    });
    router.post("/api/notebook/saveGraph", Access::signedIn, [this](const auto& request, const auto& caller) {
        return saveGraph(request, *caller.account);
    });
    router.post(
        "/api/notebook/deleteNotes", Access::signedIn, [this](const auto& request, const auto& caller) {
            model_.notebook.remove(*caller.account, itemsOf(request.parameters.text("problems"), '\t'));
            return ServiceReply::json({{"response", "deleted"}});
        });
    router.post("/api/notebook/updateNoteFavorite", Access::signedIn,
                [this](const auto& request, const auto& caller) {
                    return updateNoteFavorite(request, *caller.account);
                });
    router.post("/api/notebook/updateNoteNotes", Access::signedIn,
                [this](const auto& request, const auto& caller) {
                    return accepted(model_.notebook.setNotes(
                        *caller.account, request.parameters.text("problem"), request.parameters.text("val")));
                });
    router.post(
        "/api/notebook/setNoteTags", Access::signedIn,
        [this](const auto& request, const auto& caller) { return setNoteTags(request, *caller.account); });
    router.post("/api/notebook/clearNotes", Access::signedIn, [this](const auto&, const auto& caller) {
        model_.notebook.clear(*caller.account);
        return ServiceReply::json({{"response", "cleared"}});
    });
    router.post("/api/notebook/getList", Access::anyToken,
                [this](const auto& request, const auto&) { return getList(request); });
    router.post("/api/notebook/saveList", Access::signedIn, [this](const auto& request, const auto& caller) {
        return saveList(request, *caller.account);
    });
}

ServiceReply Routes::addNote(const ReceivedRequest& request, std::int64_t account) {
    NoteRecord note;
    note.problem = request.parameters.text("problem");
    note.topic = request.parameters.text("topic");
    note.savedFrom = request.parameters.value("savedFrom").value_or(note.savedFrom);
    if (note.problem.empty()) {
        return ServiceReply::refusal(400, "problem is missing");
    }
    if (note.savedFrom != "Solutions" && note.savedFrom != "Graphing Calculator" &&
        note.savedFrom != "Practice") {
        return ServiceReply::refusal(400, "savedFrom is not an app of the family");
    }
    model_.notebook.add(account, {&note, 1});
    return accepted(true);
}

ServiceReply Routes::saveGraph(const ReceivedRequest& request, std::int64_t account) {
    NoteRecord note;
    note.graph = request.parameters.text("graphJson");
    boost::system::error_code problem;
    const boost::json::value graph = boost::json::parse(*note.graph, problem);
    if (problem || !graph.is_object()) {
        return ServiceReply::refusal(400, "graphJson is not a JSON object");
    }
    note.graphID = request.parameters.text("graphId");
    const bool isNew = note.graphID->empty();
    if (isNew) {
        note.graphID = randomText(graphIdentifierBytes);
    }
    note.problem = nameOf(graph.get_object(), *note.graphID);
    note.savedFrom = "Graphing Calculator";
    note.topic = "Graphs";
    // A graph that was renamed is still the same note.
    if (const std::optional<NoteRecord> known = model_.notebook.graph(account, *note.graphID);
        known && known->problem != note.problem) {
        model_.notebook.remove(account, {&known->problem, 1});
        note.isFavorite = known->isFavorite;
        note.notes = known->notes;
        note.tags = known->tags;
    }
    model_.notebook.add(account, {&note, 1});
    return ServiceReply::json({{"response", isNew ? "saved" : "updated"}, {"graph", *note.graphID}});
}

ServiceReply Routes::updateNoteFavorite(const ReceivedRequest& request, std::int64_t account) {
    const std::string value = request.parameters.text("val");
    if (value != "true" && value != "false") {
        return ServiceReply::refusal(400, "val is neither true nor false");
    }
    return accepted(
        model_.notebook.setFavorite(account, request.parameters.text("problem"), value == "true"));
}

ServiceReply Routes::setNoteTags(const ReceivedRequest& request, std::int64_t account) {
    const Parameters& form = request.parameters;
    std::vector<std::string> tags = itemsOf(form.text("tags") + "," + form.text("added"), ',');
    for (const std::string& removed : itemsOf(form.text("removed"), ',')) {
        std::erase(tags, removed);
    }
    return accepted(model_.notebook.setTags(account, form.text("problem"), tags));
}

ServiceReply Routes::getList(const ReceivedRequest& request) {
    const std::optional<SharedList> list = model_.lists.list(request.parameters.text("_id"));
    if (!list) {
        // A reply without notes, not a failure: the link was followed, there is only nothing behind it.
        return ServiceReply::json({{"error", "There is no such list."}});
    }
    boost::json::array notes;
    for (const NoteRecord& note : list->notes) {
        boost::json::object record = jsonRecord(note);
        record["remoteID"] = note.remoteID;
        notes.push_back(std::move(record));
    }
    return ServiceReply::json({{"name", list->name}, {"notes", std::move(notes)}});
}

ServiceReply Routes::saveList(const ReceivedRequest& request, std::int64_t account) {
    switch (model_.lists.save(request.parameters.text("_id"), account)) {
    case ListSaving::saved:
        return ServiceReply::json({{"response", "saved"}, {"extra", false}});
    case ListSaving::limitReached:
        return ServiceReply::json({{"response", "limitReached"}, {"extra", true}});
    case ListSaving::noSuchList:
        return ServiceReply::refusal(404, "No such list");
    }
    return ServiceReply::refusal(500, "Internal server error");
}

} // namespace teralune::service
