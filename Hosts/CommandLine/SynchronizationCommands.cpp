#include "Hosts/CommandLine/CacheProgress.h"
#include "Hosts/CommandLine/CommandContext.h"
#include "Hosts/CommandLine/CommandSet.h"
#include "Hosts/CommandLine/InterruptWatch.h"
#include "Hosts/CommandLine/Synchronization.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <unistd.h>

namespace teralune {
namespace {

/// The line that is rewritten while the job runs; nothing where standard error is no terminal.
class ProgressLine {
public:
    ~ProgressLine() { draw(""); }
    void draw(const std::string& line) {
        if (!isTerminal_ || line == shown_)
            return;
        std::fprintf(stderr, "\r\x1b[K%s", line.c_str());
        std::fflush(stderr);
        shown_ = line;
    }

private:
    const bool isTerminal_ = ::isatty(STDERR_FILENO) != 0;
    std::string shown_;
};

std::string progressText(NotebookSynchronizationJob::Phase phase, CacheProgress& progress) {
    if (phase == NotebookSynchronizationJob::Phase::listing)
        return "Fetching the notebook …";
    const CacheProgress::Count count = progress.count();
    return std::to_string(count.notes) + " notes merged; steps kept of " + std::to_string(count.cached) +
           " of " + std::to_string(count.cacheable) + " …";
}

Result<void> synchronize(const CommandContext& context) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user;
    CommandLineApplication& application = context.application;
    bool interrupted = false;
    CacheProgress progress(application.dataController().notebookEntryRepository());
    NotebookSynchronizationJob::Phase phase;
    {
        ProgressLine line;
        const InterruptWatch watch(application.mainQueue(), [&] {
            interrupted = true;
            application.notebookSynchronizationJob().stopJob();
            line.draw("");
            std::fputs("Stopping after the step that is under way; Ctrl-C once more ends at once.\n", stderr);
        });
        phase = runSynchronization(application, [&](auto now) { line.draw(progressText(now, progress)); });
    }
    if (phase == NotebookSynchronizationJob::Phase::parked)
        return context.requestFailure();

    const NotebookEntryRepositoryType& repository = application.dataController().notebookEntryRepository();
    const CacheProgress::Count count = CacheProgress(repository).count();
    const std::optional<std::string> next = repository.nextEntryToCache();
    std::string text = std::to_string(count.notes) + " notes, the steps of " + std::to_string(count.cached) +
                       " of " + std::to_string(count.cacheable) + " problems kept for offline use.";
    if (next)
        text += "\nStopped before the steps of: " + Output::onOneLine(*next);
    context.output.show({{"notes", count.notes},
                         {"cacheable", count.cacheable},
                         {"cached", count.cached},
                         {"nextToCache", next ? boost::json::value(*next) : boost::json::value()}},
                        text);
    if (interrupted)
        return commandError("Interrupted.");
    return {};
}

} // namespace

void addSynchronizationCommands(CommandSet& commands) {
    commands.add("sync", "Fetch the notebook from the server and keep solution steps for offline use",
                 [](CommandContext& context) { return synchronize(context); });
}

} // namespace teralune
