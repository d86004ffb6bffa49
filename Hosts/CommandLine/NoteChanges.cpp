#include "Hosts/CommandLine/NoteChanges.h"

#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Hosts/CommandLine/CommandContext.h"
#include "Hosts/CommandLine/NoteText.h"
#include "Hosts/CommandLine/Synchronization.h"

#include <boost/json/array.hpp>

#include <algorithm>

namespace teralune {
namespace {

NotebookEntryRepositoryType& repository(const CommandContext& context) {
    return context.application.dataController().notebookEntryRepository();
}

/// Of several notes of that problem the one that is oldest in the store, as the library looks notes up.
Result<NotebookEntry> findNote(const CommandContext& context, const std::string& problem) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user.error();
    std::vector<NotebookEntry> notes = repository(context).entriesForFilter(Filter());
    std::erase_if(notes, [&](const NotebookEntry& note) { return note.problem() != problem; });
    const auto found = std::min_element(notes.begin(), notes.end(), [](const auto& one, const auto& other) {
        return one.rowID() < other.rowID();
    });
    if (found == notes.end())
        return commandError("The notebook has no note of \"" + problem + "\".");
    return std::move(*found);
}

Result<void> showNote(const CommandContext& context, const std::string& problem) {
    const Result<NotebookEntry> note = findNote(context, problem);
    if (!note)
        return note.error();
    context.output.show(noteRecord(note.value()), noteText(note.value()));
    return {};
}

/// What the solver says the problem is about; empty where it does not know.
std::string topicOf(const CommandContext& context, const std::string& problem) {
    NetworkingType& networking = context.application.networking();
    const auto reply = context.waitFor<SolutionStepsReply>([&](auto done) {
        networking.getSolutionSteps(problem, ShouldLog{false}, SolutionOrigin::input,
                                    RequestOnlySolution{true}, std::move(done));
    });
    const auto metadata = reply.body ? networking.parseJsonSteps(*reply.body) : std::nullopt;
    return metadata ? metadata->topic.value_or("") : "";
}

} // namespace

Result<void> saveNote(const CommandContext& context, const std::string& problem,
                      const std::optional<std::string>& topic, const std::string& savedFrom) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user;
    const std::string itsTopic = topic ? *topic : topicOf(context, problem);
    const bool saved = context.waitFor<bool>([&](auto done) {
        context.application.networking().saveNote(problem, itsTopic, savedFrom, std::move(done));
    });
    if (!saved)
        return context.requestFailure();
    // The server names the new note, so it enters the store with the server's list.
    if (refreshNotebook(context.application) == NotebookSynchronizationJob::Phase::parked)
        return commandError("The note was saved, but the notebook could not be fetched; sync does it later.");
    return showNote(context, problem);
}

Result<void> starNote(const CommandContext& context, const std::string& problem, Favorite favorite) {
    const Result<NotebookEntry> note = findNote(context, problem);
    if (!note)
        return note.error();
    repository(context).updateProblem(problem, favorite);
    const bool accepted = context.waitFor<bool>(
        [&](auto done) { context.application.networking().updateNote(favorite, problem, std::move(done)); });
    if (accepted)
        return showNote(context, problem);
    // A rejected session has emptied the notebook meanwhile.
    if (repository(context).getNotebookEntry(problem))
        repository(context).updateProblem(problem, Favorite{note.value().isFavorite().value_or(false)});
    return context.requestFailure();
}

Result<void> annotateNote(const CommandContext& context, const std::string& problem,
                          const std::string& text) {
    Result<NotebookEntry> note = findNote(context, problem);
    if (!note)
        return note.error();
    const bool accepted = context.waitFor<bool>([&](auto done) {
        context.application.networking().updateNote(Notes{text}, problem, std::move(done));
    });
    if (!accepted)
        return context.requestFailure();
    note.value().setNotes(text, context.application.dataController().managedObjectContext(),
                          context.application.crashReporter());
    return showNote(context, problem);
}

Result<void> tagNote(const CommandContext& context, const std::string& problem, const TagWishes& wishes) {
    Result<NotebookEntry> note = findNote(context, problem);
    if (!note)
        return note.error();
    TagChange change;
    change.tagsAdded.insert(wishes.add.begin(), wishes.add.end());
    change.tagsRemoved.insert(wishes.remove.begin(), wishes.remove.end());
    // The server takes the tags it is sent for all there are, so they must be known.
    const Result<std::vector<std::string>> before = note.value().readTagStrings();
    if (!before)
        return commandError("The note's tags could not be read: " + before.error().localizedDescription);
    change.tags.insert(before.value().begin(), before.value().end());
    change.tags.insert(wishes.add.begin(), wishes.add.end());
    for (const std::string& tag : wishes.remove)
        change.tags.erase(tag);

    const Result<void> accepted =
        context.waitFor(context.application.networking().updateNote(change, problem));
    if (!accepted)
        return context.requestFailure(accepted.error());
    ObjectContext& store = context.application.dataController().managedObjectContext();
    note.value().setTags(wishes.add, store, context.application.crashReporter());
    note.value().removeTags(wishes.remove, store, context.application.crashReporter());
    return showNote(context, problem);
}

Result<void> deleteNotes(const CommandContext& context, const std::vector<std::string>& problems) {
    std::vector<NotebookEntry> notes;
    for (const std::string& problem : problems) {
        Result<NotebookEntry> note = findNote(context, problem);
        if (!note)
            return note.error();
        notes.push_back(std::move(note).value());
    }
    const bool accepted = context.waitFor<bool>(
        [&](auto done) { context.application.networking().removeNotes(problems, std::move(done)); });
    if (!accepted)
        return context.requestFailure();
    repository(context).removeNotes(notes);
    boost::json::array deleted(problems.begin(), problems.end());
    context.output.show({{"deleted", std::move(deleted)}}, std::to_string(notes.size()) + " deleted.");
    return {};
}

} // namespace teralune
