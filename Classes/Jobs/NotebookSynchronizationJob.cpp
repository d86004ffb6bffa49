#include "Classes/Jobs/NotebookSynchronizationJob.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/NetworkingType.h"
#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Classes/Interfaces/UserAccountModelType.h"
#include "Classes/Model/CoreData/DataController.h"
#include "Platform/Dispatch/CountingSemaphore.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/NotificationCenter.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace teralune {

/// Shared with the replies and the background work under way, which therefore find it alive.
struct NotebookSynchronizationJob::State : std::enable_shared_from_this<State> {
    explicit State(IApplication& host) : application(host) {}

    void run();
    void handleList(const std::string& user, NotebookEntriesReply reply);
    /// False when the list is not the notebook of whoever is signed in by now, and so is not kept.
    bool merge(const std::string& user, const boost::json::array& entries);
    /// One step. stored is the problem whose steps were stored just before.
    void collectStepData(const std::optional<std::string>& stored = {});
    void handleSteps(std::uint64_t phase, const std::string& problem, const SolutionStepsReply& reply);
    /// With the mutex held.
    void endStepPhase();
    NotebookEntryRepositoryType& repository() const {
        return application.dataController().notebookEntryRepository();
    }
    /// Runs the work on the background queue, unless the job has ended by then.
    void onBackgroundQueue(DispatchQueue::Work work);
    /// Waits for the work that is running; none begins any more.
    void end();

    IApplication& application;

    mutable std::mutex mutex;
    std::condition_variable pieceEnded;
    int runningPieces = 0;
    bool hasEnded = false;
    bool stepJobRunning = false;
    bool listJobRunning = false;
    bool parked = false;
    bool stopRequested = false;
    std::uint64_t stepPhase = 0; ///< how many step phases have ended
    std::shared_ptr<CountingSemaphore> semaphore;
};

NotebookSynchronizationJob::NotebookSynchronizationJob(IApplication& application)
    : state_(std::make_shared<State>(application)) {
    askedToRun_ = application.platform().notificationCenter->observe(
        std::string(RunSynchronizationJobNotification), [weak = std::weak_ptr(state_)](const Notification&) {
            if (const auto state = weak.lock())
                state->run();
        });
}

NotebookSynchronizationJob::~NotebookSynchronizationJob() {
    askedToRun_ = {};
    state_->end();
}

void NotebookSynchronizationJob::runSynchronizationJob() {
    state_->run();
}

void NotebookSynchronizationJob::stopJob() {
    const std::lock_guard lock(state_->mutex);
    state_->stopRequested = true;
}

void NotebookSynchronizationJob::waitForCompletion() {
    std::shared_ptr<CountingSemaphore> semaphore;
    {
        const std::lock_guard lock(state_->mutex);
        if (!state_->listJobRunning && !state_->stepJobRunning)
            return;
        semaphore = state_->semaphore;
    }
    if (!semaphore)
        return;
    // One signal lets everyone pass, now and later.
    semaphore->wait();
    semaphore->signal();
}

NotebookSynchronizationJob::Phase NotebookSynchronizationJob::phase() const {
    const std::lock_guard lock(state_->mutex);
    if (state_->parked)
        return Phase::parked;
    if (state_->listJobRunning)
        return Phase::listing;
    return state_->stepJobRunning ? Phase::caching : Phase::idle;
}

void NotebookSynchronizationJob::State::run() {
    {
        const std::lock_guard lock(mutex);
        if (listJobRunning || hasEnded)
            return;
        stopRequested = false;
        listJobRunning = true;
    }
    const std::string user = application.userAccountModel().connectedID();
    if (user.empty()) {
        const std::lock_guard lock(mutex);
        listJobRunning = false;
        endStepPhase();
        return;
    }
    application.networking().getNotebookEntries(
        [self = shared_from_this(), user](NotebookEntriesReply reply) {
            self->handleList(user, std::move(reply));
        });
}

void NotebookSynchronizationJob::State::onBackgroundQueue(DispatchQueue::Work work) {
    application.platform().backgroundQueue->async(
        [self = shared_from_this(), work = std::move(work)]() mutable {
            {
                const std::lock_guard lock(self->mutex);
                if (self->hasEnded)
                    return;
                ++self->runningPieces;
            }
            work();
            const std::lock_guard lock(self->mutex);
            --self->runningPieces;
            self->pieceEnded.notify_all();
        });
}

void NotebookSynchronizationJob::State::end() {
    std::unique_lock lock(mutex);
    hasEnded = true;
    stopRequested = true;
    pieceEnded.wait(lock, [this] { return runningPieces == 0; });
    endStepPhase();
}

void NotebookSynchronizationJob::State::handleList(const std::string& user, NotebookEntriesReply reply) {
    const bool usable = reply.success && std::all_of(reply.entries.begin(), reply.entries.end(),
                                                     [](const auto& entry) { return entry.is_object(); });
    if (!usable) {
        // The list phase stays marked as running: a failed download parks the job.
        const std::lock_guard lock(mutex);
        parked = true;
        return;
    }
    onBackgroundQueue([self = shared_from_this(), user, entries = std::move(reply.entries)] {
        if (!self->merge(user, entries)) {
            {
                const std::lock_guard lock(self->mutex);
                self->listJobRunning = false;
            }
            self->run();
            return;
        }
        self->application.platform().notificationCenter->post(
            {std::string(NotebookSynchronizationComplete), {}, {}});
        {
            const std::lock_guard lock(self->mutex);
            self->listJobRunning = false;
            if (self->stepJobRunning)
                return;
            self->stepJobRunning = true;
            self->semaphore = std::make_shared<CountingSemaphore>(0);
        }
        self->collectStepData();
    });
}

bool NotebookSynchronizationJob::State::merge(const std::string& user, const boost::json::array& entries) {
    const auto isTheirs = [this, &user] { return application.userAccountModel().connectedID() == user; };
    if (!isTheirs())
        return false;
    repository().insertNotebookEntries(entries);
    if (isTheirs())
        return true;
    // The sign-out came during the merge, and emptied the store before its end.
    application.dataController().logout();
    return false;
}

void NotebookSynchronizationJob::State::collectStepData(const std::optional<std::string>& stored) {
    bool mayGoOn = false;
    std::uint64_t phase = 0;
    {
        const std::lock_guard lock(mutex);
        stepJobRunning = true;
        mayGoOn = !stopRequested;
        phase = stepPhase;
    }
    const std::optional<std::string> problem = mayGoOn ? repository().nextEntryToCache() : std::nullopt;
    // The store offers a problem again only when it could not keep its steps; asking the server for them over
    // and over would not help.
    if (!problem || *problem == stored) {
        const std::lock_guard lock(mutex);
        endStepPhase();
        return;
    }
    application.networking().getSolutionSteps(
        *problem, ShouldLog{false}, SolutionOrigin::notebookCache, RequestOnlySolution{false},
        [self = shared_from_this(), phase, problem = *problem](SolutionStepsReply reply) {
            self->onBackgroundQueue([self, phase, problem, reply = std::move(reply)] {
                self->handleSteps(phase, problem, reply);
            });
        });
}

void NotebookSynchronizationJob::State::handleSteps(std::uint64_t phase, const std::string& problem,
                                                    const SolutionStepsReply& reply) {
    {
        const std::lock_guard lock(mutex);
        // A run without a user has ended the phase meanwhile.
        if (phase != stepPhase)
            return;
        if (!reply.success || !reply.body || reply.body->empty()) {
            endStepPhase();
            return;
        }
    }
    repository().updateProblemWithSteps(problem, *reply.body);
    collectStepData(problem);
}

void NotebookSynchronizationJob::State::endStepPhase() {
    ++stepPhase;
    stepJobRunning = false;
    if (semaphore)
        semaphore->signal();
}

} // namespace teralune
