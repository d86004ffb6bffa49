#include "Classes/Networking/Networking.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Networking/ReplyReading.h"
#include "Platform/Foundation/AsciiText.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/Printer.h"

namespace teralune {
namespace {

void postUserUpdatedNote(const IApplication& application) {
    application.platform().notificationCenter->post(
        {std::string(NetworkingType::UserUpdatedNoteNotification), {}, {}});
}

/// The reply when it is what `if_…` finds in it; otherwise nothing, which is printed unless there was no
/// reply.
template<class Shape>
const Shape* read(const IApplication& application, const DataResponse<boost::json::value>& response,
                  const Shape* (boost::json::value::*ifShape)() const noexcept) {
    const bool isJson = response.result.succeeded();
    const Shape* shape = isJson ? (response.result.value().*ifShape)() : nullptr;
    if (!shape && (isJson || isUnreadableReply(response.result.error())))
        application.platform().printer->print("Error reading json");
    return shape;
}

const boost::json::object* readObject(const IApplication& application,
                                      const DataResponse<boost::json::value>& response) {
    return read<boost::json::object>(application, response, &boost::json::value::if_object);
}

std::optional<std::string> text(const boost::json::object& json, std::string_view key) {
    const boost::json::value* value = json.if_contains(key);
    const boost::json::string* string = value ? value->if_string() : nullptr;
    return string ? std::optional<std::string>(std::in_place, *string) : std::nullopt;
}

/// A text as it is, other JSON written compactly; absent where there is none.
std::optional<std::string> textOrJson(const boost::json::object& json, std::string_view key) {
    const boost::json::value* value = json.if_contains(key);
    if (!value || value->is_null())
        return std::nullopt;
    return value->is_string() ? text(json, key) : std::optional(serializeJson(*value));
}

template<class Texts>
std::string joined(const Texts& texts, char separator) {
    std::string all;
    for (const std::string& one : texts) {
        if (&one != &*texts.begin())
            all.push_back(separator);
        all.append(one);
    }
    return all;
}

} // namespace

void Networking::hasWebNotes(UniqueFunction<void(bool)> completion) {
    makeRequest(fullHostName() + "/api/hasWebNotes", HttpMethod::get, {}, *sessionManagerWithPrivateToken_)
        .responseString(
            [completion = std::move(completion)](const DataResponse<std::string>& response) mutable {
                completion(response.result && equalsIgnoringCase(response.result.value(), "true"));
            })
        .detach();
}

void Networking::getNotebookEntries(UniqueFunction<void(NotebookEntriesReply)> completion) {
    makeRequest(fullHostName() + "/api/notebookEntriesForMobileAll", HttpMethod::get, {},
                *sessionManagerWithPrivateToken_)
        .responseJSON([&application = application_, completion = std::move(completion)](
                          DataResponse<boost::json::value> response) mutable {
            if (read<boost::json::array>(application, response, &boost::json::value::if_array))
                completion({true, std::move(response.result.value().get_array())});
            else
                completion({});
        })
        .detach();
}

void Networking::saveNote(const std::string& query, const std::string& topic, const std::string& savedFrom,
                          UniqueFunction<void(bool)> completion) {
    post("/api/notebook/addNote",
         {{"problem", query},
          {"isMobile", "1"},
          {"isNotebook", "1"},
          {"topic", topic},
          {"savedFrom", savedFrom}},
         *sessionManagerWithPrivateToken_)
        .responseJSON([&application = application_, completion = std::move(completion)](
                          const DataResponse<boost::json::value>& response) mutable {
            const bool isSaved = readObject(application, response) != nullptr;
            if (isSaved)
                postUserUpdatedNote(application);
            completion(isSaved);
        })
        .detach();
}

void Networking::saveGraph(const std::optional<std::string>& graphId, const std::string& graphJson,
                           UniqueFunction<void(SaveGraphReply)> completion) {
    post("/api/notebook/saveGraph",
         {{"graphId", graphId.value_or("")}, {"isMobile", "1"}, {"graphJson", graphJson}},
         *sessionManagerWithPrivateToken_)
        .responseJSON([&application = application_, completion = std::move(completion)](
                          const DataResponse<boost::json::value>& response) mutable {
            const boost::json::object* object = readObject(application, response);
            if (!object) {
                completion({});
                return;
            }
            postUserUpdatedNote(application);
            completion({true, text(*object, "response"), textOrJson(*object, "graph")});
        })
        .detach();
}

void Networking::removeNote(const std::string& query, UniqueFunction<void(bool)> completion) {
    removeNotes({query}, std::move(completion));
}

void Networking::removeNotes(const std::vector<std::string>& queries, UniqueFunction<void(bool)> completion) {
    changeNotes("/api/notebook/deleteNotes", {{"problems", joined(queries, '\t')}, {"isMobile", "1"}},
                std::move(completion));
}

void Networking::updateNote(Favorite favorite, const std::string& problem,
                            UniqueFunction<void(bool)> completion) {
    changeNotes("/api/notebook/updateNoteFavorite",
                {{"problem", problem}, {"isMobile", "1"}, {"val", favorite.value ? "true" : "false"}},
                std::move(completion));
}

void Networking::changeNotes(std::string_view path, const HttpParameters& parameters,
                             UniqueFunction<void(bool)> completion) {
    post(path, parameters, *sessionManagerWithPrivateToken_)
        .response([&application = application_,
                   completion = std::move(completion)](const DataResponse<void>& response) mutable {
            if (response.result)
                postUserUpdatedNote(application);
            completion(response.result.succeeded());
        })
        .detach();
}

void Networking::updateNote(const Notes& notes, const std::string& problem,
                            UniqueFunction<void(bool)> completion) {
    changeNotes("/api/notebook/updateNoteNotes",
                {{"problem", problem}, {"isMobile", "1"}, {"val", notes.value}}, std::move(completion));
}

Task<void> Networking::updateNote(const TagChange& change, const std::string& problem) {
    return changeNotes("/api/notebook/setNoteTags", {{"problem", problem},
                                                     {"isMobile", "1"},
                                                     {"tags", joined(change.tags, ',')},
                                                     {"removed", joined(change.tagsRemoved, ',')},
                                                     {"added", joined(change.tagsAdded, ',')}});
}

Task<void> Networking::clearNotebook() {
    return changeNotes("/api/notebook/clearNotes", {});
}

Task<void> Networking::changeNotes(std::string_view path, const HttpParameters& parameters) {
    const TaskCompletionSource<void> source;
    post(path, parameters, *sessionManagerWithPrivateToken_)
        .response([&application = application_, source](const DataResponse<void>& response) {
            if (response.result)
                postUserUpdatedNote(application);
            source.complete(response.result);
        })
        .detach();
    return source.task();
}

void Networking::loadPreviewNotes(const std::string& listID,
                                  UniqueFunction<void(PreviewNotesReply)> completion) {
    post("/api/notebook/getList", {{"_id", listID}}, *sessionManagerWithAnyToken_)
        .responseJSON([&application = application_, completion = std::move(completion)](
                          const DataResponse<boost::json::value>& response) mutable {
            const boost::json::object* object = readObject(application, response);
            if (!object) {
                completion({});
                return;
            }
            PreviewNotesReply reply{.success = true, .notes = {}, .name = text(*object, "name")};
            const boost::json::value* notes = object->if_contains("notes");
            if (notes && notes->is_array())
                reply.notes = notes->get_array();
            completion(std::move(reply));
        })
        .detach();
}

void Networking::savePreviewNotes(const std::string& listID,
                                  UniqueFunction<void(SavePreviewNotesReply)> completion) {
    post("/api/notebook/saveList", {{"_id", listID}}, *sessionManagerWithPrivateToken_)
        .responseJSON([&application = application_, completion = std::move(completion)](
                          const DataResponse<boost::json::value>& response) mutable {
            SavePreviewNotesReply reply;
            if (const boost::json::object* object = readObject(application, response)) {
                // "extra" is true when the user has as many lists as the server allows.
                const boost::json::value* extra = object->if_contains("extra");
                reply.limitReached = extra && extra->is_bool() && extra->get_bool();
                reply.success = !reply.limitReached;
            }
            if (reply.success)
                postUserUpdatedNote(application);
            completion(reply);
        })
        .detach();
}

} // namespace teralune
