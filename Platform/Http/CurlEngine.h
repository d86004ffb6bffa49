#pragma once

#include "Platform/Http/CurlExchange.h"
#include "Platform/Http/CurlHandle.h"
#include "Platform/Http/CurlTransport.h"
#include "Platform/Http/CurlWatch.h"
#include "Platform/Http/RequestSchedule.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

namespace teralune {

/// The thread that carries out transfers on one multi handle. The public operations may be called from any
/// thread and only leave a command; everything else happens on the engine's thread, where a completion runs
/// as well, without any lock.
class CurlEngine : public std::enable_shared_from_this<CurlEngine> {
public:
    /// A transfer as the engine knows it.
    struct Job {
        Job(const CurlTransport::Limits& limits, URLRequest request, TransferLane jobLane,
            HttpTransport::Completion toCall)
            : host(originOf(request.url))
            , lane(jobLane)
            , exchange(limits, std::move(request), jobLane)
            , completion(std::move(toCall)) {}

        RequestSchedule::Id id = 0; ///< set once, before anyone else sees the job
        const std::string host;
        const TransferLane lane;
        CurlExchange exchange;
        HttpTransport::Completion completion;
        std::unique_ptr<CurlHandle> handle; ///< while it is under way
        enum class State { waiting, started, settled };
        std::atomic<State> state = State::waiting; ///< settled: completed or cancelled, whichever came first
    };

    static std::shared_ptr<CurlEngine> start(const CurlTransport::Limits& limits);
    explicit CurlEngine(const CurlTransport::Limits& limits);
    ~CurlEngine();

    std::shared_ptr<Job> add(URLRequest request, TransferLane lane, HttpTransport::Completion completion);
    void cancel(Job& job);
    /// Cancels a job of which nothing was sent yet; false for any other, which is then left as it is.
    bool withdraw(Job& job);
    /// Ends the thread, and with it every transfer, without completing them. On the thread itself it ends
    /// once the caller has returned.
    void stop();

private:
    /// Scheme, host and port as they are written; enough to tell hosts apart for scheduling.
    static std::string originOf(const std::string& url);

    void run();
    bool takeCommands();
    void startWaiting();
    void start(Job& job);
    void perform(Job& job);
    bool readMessages();
    void end(Job& job, TransferOutcome outcome);
    bool isCompletionDue() const;
    void complete();
    void forget(RequestSchedule::Id id);
    void releaseHandle(Job& job);
    void wait();
    void leaveCancel(const Job& job);
    /// Carries out the command with the lock held and wakes the thread if it sleeps.
    template<class Command>
    void leave(Command command);

    const CurlTransport::Limits limits_;
    CurlWatch watch_;
    std::thread thread_;

    std::mutex mutex_;
    std::atomic<bool> isStopping_ = false; ///< set with the lock held
    bool isWaiting_ = false;               ///< the thread sleeps, or is about to, and was not woken yet
    RequestSchedule::Id lastId_ = 0;
    std::vector<std::shared_ptr<Job>> added_;
    std::vector<RequestSchedule::Id> cancelled_;

    // Of the engine's thread.
    struct Ended {
        std::shared_ptr<Job> job;
        TransferOutcome outcome;
    };
    void* multi_ = nullptr;
    std::vector<std::unique_ptr<CurlHandle>> idleHandles_;
    RequestSchedule schedule_;
    std::unordered_map<RequestSchedule::Id, std::shared_ptr<Job>> jobs_;
    std::vector<Ended> ended_; ///< whose completions are still to run
    std::chrono::steady_clock::time_point firstEnded_;
};

} // namespace teralune
