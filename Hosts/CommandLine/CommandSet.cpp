#include "Hosts/CommandLine/CommandSet.h"

#include <CLI/CLI.hpp>

namespace teralune {

CLI::App& CommandSet::add(const std::string& name, const std::string& description, Action action,
                          CLI::App* parent) {
    CLI::App* command = (parent ? *parent : root_).add_subcommand(name, description);
    actions_.emplace(command, std::move(action));
    return *command;
}

CLI::App& CommandSet::addGroup(const std::string& name, const std::string& description) {
    CLI::App* group = root_.add_subcommand(name, description);
    group->require_subcommand(1);
    return *group;
}

const CommandSet::Action* CommandSet::chosen() const {
    const CLI::App* command = &root_;
    for (auto named = command->get_subcommands(); !named.empty(); named = command->get_subcommands())
        command = named.front();
    const auto found = actions_.find(command);
    return found == actions_.end() ? nullptr : &found->second;
}

} // namespace teralune
