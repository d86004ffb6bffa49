#pragma once

#include "Classes/Jobs/NotebookSynchronizationJob.h"

#include <functional>

namespace teralune {

class CommandLineApplication;

/// Runs the job and, on the main thread, the main queue until the job has ended: idle, or parked when the
/// list could not be fetched. Shows progress a few times a second.
NotebookSynchronizationJob::Phase
runSynchronization(CommandLineApplication& application,
                   const std::function<void(NotebookSynchronizationJob::Phase)>& showProgress = {});

/// The list phase alone: the notebook is merged, no steps are fetched.
NotebookSynchronizationJob::Phase refreshNotebook(CommandLineApplication& application);

} // namespace teralune
