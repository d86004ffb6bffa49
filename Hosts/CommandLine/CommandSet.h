#pragma once

#include "Platform/Foundation/Result.h"

#include <functional>
#include <map>
#include <string>
#include <variant>

namespace CLI { // NOLINT(readability-identifier-naming): not ours to name
class App;
}

namespace teralune {

struct CommandContext;
struct HostOptions;
class Output;

/// The words of the command line and what each of them does. Filled before the arguments are parsed.
class CommandSet {
public:
    using ApplicationAction = std::function<Result<void>(CommandContext&)>;
    /// What has to work while the application can't be made, such as its repair.
    using BareAction = std::function<Result<void>(const HostOptions&, Output&)>;
    using Action = std::variant<ApplicationAction, BareAction>;

    explicit CommandSet(CLI::App& root) : root_(root) {}

    CLI::App& root() { return root_; }
    /// A command below another one, or below the root. The caller adds its arguments.
    CLI::App& add(const std::string& name, const std::string& description, Action action,
                  CLI::App* parent = nullptr);
    /// A word that needs another one behind it.
    CLI::App& addGroup(const std::string& name, const std::string& description);

    /// What the parsed arguments ask for: the action of the innermost command that was named. Null when none
    /// was.
    const Action* chosen() const;

private:
    CLI::App& root_;
    std::map<const CLI::App*, Action> actions_;
};

/// The commands, by what they are about. Each adds its own to the set.
void addSessionCommands(CommandSet& commands);
void addAccountCommands(CommandSet& commands);
void addSynchronizationCommands(CommandSet& commands);
void addNotebookCommands(CommandSet& commands);
void addNoteCommands(CommandSet& commands);
void addSolverCommands(CommandSet& commands);
void addSettingsCommands(CommandSet& commands);
void addStatusCommands(CommandSet& commands);
void addStoreCommands(CommandSet& commands);

} // namespace teralune
