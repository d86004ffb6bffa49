#include "Hosts/CommandLine/CommandContext.h"
#include "Hosts/CommandLine/CommandSet.h"
#include "Platform/Foundation/Utf8.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <exception>

namespace {

using namespace teralune;

struct Options {
    HostOptions host;
    bool json = false;
};

int complain(const std::string& line, ExitCode code) {
    std::fputs(("teralune: " + Output::onOneLine(line) + "\n").c_str(), stderr);
    return static_cast<int>(code);
}

void addOptions(CLI::App& root, Options& options) {
    // The last one counts, so that a shell's alias can be overruled.
    const auto add = [&root](const char* name, auto& variable, const char* description) {
        return root.add_option(name, variable, description)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    };
    add("--data-dir", options.host.dataFolder, "Where settings and notes are kept")->capture_default_str();
    add("--api-host", options.host.apiHost,
        "HOST[:PORT] of the solver service; without it a stand-in runs inside this process");
    add("--ocr-host", options.host.ocrHost,
        "HOST[:PORT] of the recognition service; the solver service's unless given");
    root.add_flag("--http", options.host.plainHttp, "Talk to the given hosts over http instead of https");
    root.add_flag("--offline", options.host.offline, "Behave as without a network");
    root.add_flag("--verbose", options.host.verbose, "Show printed and logged lines on standard error");
    root.add_flag("--json", options.json, "Print one JSON value instead of text");
}

Result<void> runInApplication(const CommandSet::ApplicationAction& action, const Options& options,
                              Output& output) {
    Result<std::unique_ptr<CommandLineApplication>> opened = CommandLineApplication::open(options.host);
    if (!opened)
        return opened.error();
    CommandLineApplication& application = *opened.value();
    CommandContext context{application, output};
    Result<void> outcome = action(context);
    application.settle();
    return outcome;
}

int run(const Options& options, const CommandSet::Action& action) {
    Output output(options.json ? Output::Form::json : Output::Form::text);
    const auto* bare = std::get_if<CommandSet::BareAction>(&action);
    const Result<void> outcome =
        bare ? (*bare)(options.host, output)
             : runInApplication(std::get<CommandSet::ApplicationAction>(action), options, output);
    if (!output.finish())
        return complain("The output could not be written.", ExitCode::failed);
    if (outcome)
        return static_cast<int>(ExitCode::done);
    const Error& error = outcome.error();
    return complain(error.localizedDescription,
                    error.domain == CommandErrorDomain ? ExitCode(error.code) : ExitCode::failed);
}

} // namespace

int main(int argc, char** argv) {
    // A file that must not grow any further is an error like a full disk, not the end.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        for (int i = 1; i < argc; ++i)
            if (!isValidUtf8(argv[i]))
                return complain("Argument " + std::to_string(i) + " is not UTF-8 text.",
                                ExitCode::wrongUsage);

        CLI::App root("A notebook of solved problems, for the terminal.", "teralune");
        root.set_version_flag("--version", TERALUNE_VERSION);
        root.require_subcommand(0, 1);
        root.fallthrough();
        Options options;
        addOptions(root, options);
        CommandSet commands(root);
        addSessionCommands(commands);
        addSynchronizationCommands(commands);
        addNotebookCommands(commands);
        addNoteCommands(commands);
        addSolverCommands(commands);
        addSettingsCommands(commands);
        addAccountCommands(commands);
        addStatusCommands(commands);
        addStoreCommands(commands);
        try {
            root.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            // Help and version come this way too; their text goes to standard output.
            if (error.get_exit_code() == 0)
                return root.exit(error);
            return complain(error.what(), ExitCode::wrongUsage);
        }
        const CommandSet::Action* action = commands.chosen();
        if (!action)
            return complain("What shall be done? teralune --help lists the commands.", ExitCode::wrongUsage);
        return run(options, *action);
    } catch (const std::exception& error) {
        return complain(error.what(), ExitCode::failed);
    }
}
