#pragma once

namespace teralune {

/// Brings the local notebook in step with the server and caches solution steps in the background.
class NotebookSynchronizationJobType {
public:
    virtual ~NotebookSynchronizationJobType() = default;
    /// Starts a run, unless a list is being downloaded; returns at once.
    virtual void runSynchronizationJob() = 0;
    /// The step in flight ends and is stored; no further one begins.
    virtual void stopJob() = 0;
    /// Blocks the caller until the step phase ends, or the job. Returns at once while there is none: when the
    /// job is idle or parked, or still has the list to merge. Never call it on the main thread: the replies
    /// that end the phase are delivered there.
    virtual void waitForCompletion() = 0;
};

} // namespace teralune
