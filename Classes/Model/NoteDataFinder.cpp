#include "Classes/Model/NoteDataFinder.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/LoggerType.h"
#include "Classes/Interfaces/NetworkReachabilityType.h"
#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Classes/Model/CoreData/DataController.h"
#include "Classes/Support/Localization.h"

#include <utility>

namespace teralune {
namespace {

std::optional<std::string> textAt(const AttributeDictionary& entry, std::string_view attribute) {
    const auto found = entry.find(attribute);
    const auto* text = found == entry.end() ? nullptr : std::get_if<std::string>(&found->second);
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

} // namespace

NoteDataFinder::NoteDataFinder(IApplication& application,
                               std::unique_ptr<NoteFetchingStrategyType> noteFetchingStrategy)
    : application_(application)
    , noteFetchingStrategy_(std::move(noteFetchingStrategy)) {}

void NoteDataFinder::findData(const std::string& query, const std::string& noteQuery, ForceWeb forceWeb,
                              SolutionOrigin origin, OnSuccess onSuccess, OnFailure onFailure) {
    if (forceWeb.value)
        findOnline(query, Reason::askedFor, origin, std::move(onSuccess), std::move(onFailure));
    else
        findOffline(query, noteQuery, origin, std::move(onSuccess), std::move(onFailure));
}

void NoteDataFinder::findOffline(const std::string& query, const std::string& noteQuery,
                                 SolutionOrigin origin, OnSuccess onSuccess, OnFailure onFailure) {
    const NotebookEntryRepositoryType& repository = application_.dataController().notebookEntryRepository();
    const AttributeDictionary entry = repository.getNotebookEntry(noteQuery).value_or(AttributeDictionary());
    if (std::optional<std::string> steps = textAt(entry, "stepsData")) {
        const std::optional<std::string> topic = textAt(entry, "topic");
        // The record's flag is the connection as it is, so it says offline while the device is connected: the
        // server reads these records that way round.
        const Offline offline{application_.networkReachability().hasInternetConnection()};
        application_.logger().logCachedSteps(query, topic, offline);
        onSuccess(std::move(*steps), topic);
    } else if (repository.exceededMaximumCachedEntries()) {
        onFailure(Localize(application_.platform(), "EXCEEDED_CACHED_NOTES"));
    } else {
        findOnline(query, Reason::fallbackFromOffline, origin, std::move(onSuccess), std::move(onFailure));
    }
}

void NoteDataFinder::findOnline(const std::string& query, Reason reason, SolutionOrigin origin,
                                OnSuccess onSuccess, OnFailure onFailure) {
    // A person asked for the note either way, and so the server counts the request.
    noteFetchingStrategy_->fetchSingleNoteData(
        query, ShouldLog{true}, origin,
        [&application = application_, reason, onSuccess = std::move(onSuccess),
         onFailure = std::move(onFailure)](FetchedNoteData data) mutable {
            if (data.success && data.steps) {
                onSuccess(std::move(*data.steps), std::move(data.topic));
                return;
            }
            const char* key = reason == Reason::fallbackFromOffline ? "CACHE_NOT_YET_RETRIEVED"
                              : data.isNull                         ? "NULL_STEPS_RESPONSE"
                                                                    : "NO_INTERNET_CONNECTION_OFFLINE";
            onFailure(Localize(application.platform(), key));
        });
}

} // namespace teralune
