#pragma once

#include "Classes/Interfaces/NotebookSynchronizationJobType.h"
#include "Platform/Foundation/NotificationCenter.h"

#include <memory>
#include <string_view>

namespace teralune {

class IApplication;

/// Brings the local notebook in step with the server in two phases: the list phase downloads the whole
/// notebook and merges it; the step phase then fetches and stores the solution steps of saved problems,
/// newest first and strictly one at a time, until nothing is left to cache, the cache is full, a download
/// fails, or a stop is asked for.
///
/// A failed list download parks the job: no later call of runSynchronizationJob() does anything until the
/// process starts anew.
///
/// runSynchronizationJob() and stopJob() may be called from any thread. Merging and storing run on the
/// background queue; the replies arrive on the main queue, so waitForCompletion() must not be called there.
class NotebookSynchronizationJob final : public NotebookSynchronizationJobType {
public:
    /// Posted by others who want a run; the job answers it with runSynchronizationJob().
    static constexpr std::string_view RunSynchronizationJobNotification = "RunSynchronizationJobNotification";
    /// Posted on the background queue, without object, after each merge and before the step phase.
    static constexpr std::string_view NotebookSynchronizationComplete = "NotebookSynchronizationComplete";

    enum class Phase {
        idle,
        listing, ///< the list is being downloaded or merged; an earlier step phase may still be running
        parked,  ///< the list download has failed
        caching, ///< the step phase is under way
    };

    explicit NotebookSynchronizationJob(IApplication& application);
    ~NotebookSynchronizationJob() override;

    void runSynchronizationJob() override;
    void stopJob() override;
    void waitForCompletion() override;

    /// For hosts that show progress. Any thread.
    Phase phase() const;

private:
    struct State;
    std::shared_ptr<State> state_;
    Observation askedToRun_;
};

} // namespace teralune
