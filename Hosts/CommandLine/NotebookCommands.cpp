#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Hosts/CommandLine/CommandContext.h"
#include "Hosts/CommandLine/CommandSet.h"
#include "Hosts/CommandLine/NoteText.h"

#include <CLI/CLI.hpp>
#include <boost/json/array.hpp>

#include <vector>

namespace teralune {
namespace {

struct Choice {
    bool favorites = false;
    std::vector<std::string> types;
    std::vector<std::string> topics;
    std::vector<std::string> tags;
};

Filter filterFor(const Choice& choice, const NotebookEntryRepositoryType& repository) {
    Filter filter = repository.blankFilter();
    filter.filterFavorites = choice.favorites;
    for (const std::string& type : choice.types)
        filter.typeFilter.dict[type] = true;
    for (const std::string& topic : choice.topics)
        filter.topicFilter.dict[topic] = true;
    for (const std::string& tag : choice.tags)
        filter.tagFilter.dict[tag] = true;
    return filter;
}

Result<void> listNotes(const CommandContext& context, const Choice& choice) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user;
    const NotebookEntryRepositoryType& repository =
        context.application.dataController().notebookEntryRepository();
    boost::json::array records;
    std::string text;
    for (const NotebookEntry& note : repository.entriesForFilter(filterFor(choice, repository))) {
        records.emplace_back(noteRecord(note));
        text += noteText(note);
    }
    if (records.empty())
        text = repository.noteCount() == 0 ? "The notebook is empty; sync fetches it." : "No such notes.";
    context.output.show(records, text);
    return {};
}

Result<void> clearNotes(const CommandContext& context) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user;
    if (Result<void> cleared = context.waitFor(context.application.networking().clearNotebook()); !cleared)
        return context.requestFailure(cleared.error());
    context.application.dataController().notebookEntryRepository().clear();
    context.output.show({{"notes", 0}}, "The notebook has been cleared.");
    return {};
}

} // namespace

void addNotebookCommands(CommandSet& commands) {
    const auto choice = std::make_shared<Choice>();
    CLI::App& notes = commands.add("notes", "List the notebook, newest change first",
                                   [choice](CommandContext& context) { return listNotes(context, *choice); });
    notes.require_subcommand(0, 1);
    notes.add_flag("--favorites", choice->favorites, "Starred notes only");
    notes.add_option("--type", choice->types, "Notes saved from this app; may be repeated")
        ->check(CLI::IsMember({"Solutions", "Practice", "Graphing Calculator"}))
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    notes.add_option("--topic", choice->topics, "Notes of this topic; may be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    notes.add_option("--tag", choice->tags, "Notes with this tag; may be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    commands.add(
        "clear", "Delete all notes, here and on the server",
        [](CommandContext& context) { return clearNotes(context); }, &notes);
}

} // namespace teralune
