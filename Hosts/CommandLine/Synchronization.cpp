#include "Hosts/CommandLine/Synchronization.h"

#include "Hosts/CommandLine/CommandLineApplication.h"

#include <chrono>

namespace teralune {
namespace {

using Phase = NotebookSynchronizationJob::Phase;

/// The job ends on the background queue, which wakes nobody here.
constexpr std::chrono::milliseconds tick{20};

Phase waitForJob(CommandLineApplication& application, const std::function<void(Phase)>& showProgress) {
    const NotebookSynchronizationJob& job = application.notebookSynchronizationJob();
    const auto hasEnded = [&job] {
        const Phase phase = job.phase();
        return phase == Phase::idle || phase == Phase::parked;
    };
    while (!application.mainQueue()->runUntil(hasEnded, tick))
        if (showProgress)
            showProgress(job.phase());
    return job.phase();
}

} // namespace

Phase runSynchronization(CommandLineApplication& application,
                         const std::function<void(Phase)>& showProgress) {
    application.notebookSynchronizationJob().runSynchronizationJob();
    return waitForJob(application, showProgress);
}

Phase refreshNotebook(CommandLineApplication& application) {
    NotebookSynchronizationJob& job = application.notebookSynchronizationJob();
    job.runSynchronizationJob();
    // A stop is heeded by the step phase only, before its first step.
    job.stopJob();
    return waitForJob(application, {});
}

} // namespace teralune
