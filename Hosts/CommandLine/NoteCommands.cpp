#include "Classes/Interfaces/NoteDataFinderType.h"
#include "Hosts/CommandLine/CommandContext.h"
#include "Hosts/CommandLine/CommandSet.h"
#include "Hosts/CommandLine/NoteChanges.h"
#include "Hosts/CommandLine/NoteText.h"
#include "Hosts/CommandLine/SolutionText.h"
#include "Hosts/CommandLine/Validation.h"

#include <CLI/CLI.hpp>

#include <vector>

namespace teralune {
namespace {

struct Arguments {
    std::string problem;
    std::vector<std::string> problems;
    std::optional<std::string> topic;
    std::string savedFrom = "Solutions";
    std::string text;
    TagWishes tags;
    bool web = false;
};

/// A note's solution: from the cache where it is there, from the server otherwise.
Result<boost::json::value> findSolution(const CommandContext& context, const std::string& problem,
                                        ForceWeb forceWeb) {
    struct Found {
        std::string steps;
        std::optional<std::string> failure;
    };
    const auto found = context.waitFor<Found>([&](auto whenDone) {
        // Exactly one of the two is called.
        const auto done = std::make_shared<decltype(whenDone)>(std::move(whenDone));
        context.application.noteDataFinder().findData(
            problem, problem, forceWeb, SolutionOrigin::notebook,
            [done](std::string steps, const std::optional<std::string>&) {
                (*done)(Found{std::move(steps), {}});
            },
            [done](std::string message) {
                (*done)(Found{{}, std::move(message)});
            });
    });
    if (found.failure)
        return commandError(*found.failure);
    return solutionRecord(found.steps);
}

Result<void> show(const CommandContext& context, const Arguments& arguments) {
    // Whether the note was opened offline is recorded, so the network's state has to be known.
    context.application.hasInternetConnection();
    boost::json::array solutions;
    std::string text;
    for (const std::string& problem : arguments.problems) {
        const Result<boost::json::value> solution = findSolution(context, problem, ForceWeb{arguments.web});
        if (!solution)
            return solution.error();
        text += (text.empty() ? "" : "\n\n") + solutionText(solution.value(), SolutionDetail::everyStep);
        solutions.push_back(solution.value());
        // A record that could not be sent goes with the next one that can.
        context.application.settle();
    }
    context.output.show(solutions.size() == 1 ? solutions.front() : boost::json::value(solutions), text);
    return {};
}

/// Every command about a note takes its problem first.
CLI::App& addNoteCommand(CommandSet& commands, CLI::App& group, const std::shared_ptr<Arguments>& arguments,
                         const std::string& name, const std::string& description,
                         Result<void> (*action)(const CommandContext&, const Arguments&)) {
    CLI::App& command = commands.add(
        name, description,
        [arguments, action](CommandContext& context) { return action(context, *arguments); }, &group);
    command.add_option("PROBLEM", arguments->problem, "The note's problem")->required()->check(notEmpty());
    return command;
}

} // namespace

void addNoteCommands(CommandSet& commands) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& note = commands.addGroup("note", "Show one note of the notebook, or change it");
    const auto add = [&](const std::string& name, const std::string& description, auto action) -> CLI::App& {
        return addNoteCommand(commands, note, arguments, name, description, action);
    };

    CLI::App& showing = commands.add(
        "show", "Show the solutions of notes; works offline once their steps were kept",
        [arguments](CommandContext& context) { return show(context, *arguments); }, &note);
    showing.add_option("PROBLEM", arguments->problems, "The notes' problems")->required()->check(notEmpty());
    showing.add_flag("--web", arguments->web, "From the server, even where it was kept");
    CLI::App& saving =
        add("save", "Add a problem to the notebook", [](const auto& context, const Arguments& wish) {
            return saveNote(context, wish.problem, wish.topic, wish.savedFrom);
        });
    saving.add_option("--topic", arguments->topic, "Its topic; the solution's own unless given");
    saving.add_option("--from", arguments->savedFrom, "The app it comes from")
        ->check(CLI::IsMember({"Solutions", "Practice", "Graphing Calculator"}))
        ->capture_default_str();
    add("star", "Star a note", [](const auto& context, const Arguments& wish) {
        return starNote(context, wish.problem, Favorite{true});
    });
    add("unstar", "Take a note's star away", [](const auto& context, const Arguments& wish) {
        return starNote(context, wish.problem, Favorite{false});
    });
    add("annotate", "Replace a note's remarks",
        [](const auto& context, const Arguments& wish) {
            return annotateNote(context, wish.problem, wish.text);
        })
        .add_option("TEXT", arguments->text, "The remarks; an empty text removes them")
        ->required();
    CLI::App& tagging =
        add("tag", "Put tags on a note and take tags off", [](const auto& context, const Arguments& wish) {
            return tagNote(context, wish.problem, wish.tags);
        });
    tagging.add_option("--add", arguments->tags.add, "A tag to put on; may be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->check(isTag());
    tagging.add_option("--remove", arguments->tags.remove, "A tag to take off; may be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);

    CLI::App& deleting = commands.add(
        "delete", "Delete notes, here and on the server",
        [arguments](CommandContext& context) { return deleteNotes(context, arguments->problems); }, &note);
    deleting.add_option("PROBLEM", arguments->problems, "The notes' problems")->required()->check(notEmpty());
}

} // namespace teralune
