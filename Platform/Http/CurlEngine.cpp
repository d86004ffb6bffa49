#include "Platform/Http/CurlEngine.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Http/HttpError.h"

#include <curl/curl.h>
#include <openssl/crypto.h>

#include <csignal>

namespace teralune {

namespace {

/// Once in a process and never undone: a thread of this engine, or one that still looks up a name, may live
/// until the very end, for which OpenSSL must stay as well.
void prepareLibraries() {
    static std::once_flag once;
    std::call_once(once, [] {
        OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
            fatalError("The HTTP engine could not be initialized.");
        }
    });
}

/// While it lives, threads that the caller starts are born with every signal blocked: signals are the host's
/// business and go to its own threads.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t before_;
};

} // namespace

std::shared_ptr<CurlEngine> CurlEngine::start(const CurlTransport::Limits& limits) {
    prepareLibraries();
    auto engine = std::make_shared<CurlEngine>(limits);
    const SignalsBlocked blocked;
    engine->thread_ = std::thread([engine] { engine->run(); });
    pthread_setname_np(engine->thread_.native_handle(), "http engine");
    return engine;
}

CurlEngine::CurlEngine(const CurlTransport::Limits& limits)
    : limits_(limits)
    , schedule_(limits.transfersPerHost, limits.transfers) {}

CurlEngine::~CurlEngine() = default;

template<class Command>
void CurlEngine::leave(Command command) {
    bool isAsleep = false;
    {
        const std::lock_guard lock(mutex_);
        command();
        isAsleep = std::exchange(isWaiting_, false);
    }
    // Without the lock, which the thread wants to have as soon as it wakes up.
    if (isAsleep) {
        watch_.wake();
    }
}

std::shared_ptr<CurlEngine::Job> CurlEngine::add(URLRequest request, TransferLane lane,
                                                 HttpTransport::Completion completion) {
    auto job = std::make_shared<Job>(limits_, std::move(request), lane, std::move(completion));
    leave([&] {
        job->id = ++lastId_;
        added_.push_back(job);
    });
    return job;
}

void CurlEngine::cancel(Job& job) {
    if (job.state.exchange(Job::State::settled) != Job::State::settled) {
        leaveCancel(job);
    }
}

bool CurlEngine::withdraw(Job& job) {
    auto expected = Job::State::waiting;
    if (!job.state.compare_exchange_strong(expected, Job::State::settled)) {
        return false;
    }
    leaveCancel(job);
    return true;
}

void CurlEngine::leaveCancel(const Job& job) {
    leave([&] { cancelled_.push_back(job.id); });
}

void CurlEngine::stop() {
    leave([&] { isStopping_ = true; });
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else {
        thread_.join();
    }
}

std::string CurlEngine::originOf(const std::string& url) {
    const std::size_t authority = url.find("://");
    return authority == std::string::npos ? url : url.substr(0, url.find_first_of("/?#", authority + 3));
}

/// A connection that became free carries the next request before anyone is told of the last one: the server
/// works on it while completions run. They run once nothing else is ready, or together when a few have come
/// up, since each time wakes other threads. Whatever performed transfers is followed by a look at the
/// messages before the thread sleeps, since nothing would wake it for a transfer that has ended.
void CurlEngine::run() {
    multi_ = curl_multi_init();
    curl_multi_setopt(multi_, CURLMOPT_MAXCONNECTS, static_cast<long>(limits_.transfers + 4));
    watch_.attach(multi_);
    while (takeCommands()) {
        startWaiting();
        watch_.performDue();
        const bool isBusy = readMessages() || (!ended_.empty() && watch_.performReady());
        if (!isBusy || isCompletionDue()) {
            complete();
        }
        if (!isBusy) {
            wait();
        }
    }
    for (const auto& [id, job] : jobs_) {
        releaseHandle(*job);
    }
    ended_.clear();
    idleHandles_.clear();
    jobs_.clear();
    curl_multi_cleanup(multi_);
}

bool CurlEngine::takeCommands() {
    std::vector<std::shared_ptr<Job>> added;
    std::vector<RequestSchedule::Id> cancelled;
    {
        const std::lock_guard lock(mutex_);
        isWaiting_ = false;
        if (isStopping_) {
            return false;
        }
        added.swap(added_);
        cancelled.swap(cancelled_);
    }
    for (std::shared_ptr<Job>& job : added) {
        schedule_.add(job->id, job->host, job->lane);
        const RequestSchedule::Id id = job->id;
        jobs_.emplace(id, std::move(job));
    }
    for (const RequestSchedule::Id id : cancelled) {
        forget(id);
    }
    return true;
}

void CurlEngine::startWaiting() {
    while (const auto id = schedule_.startNext()) {
        start(*jobs_.at(*id));
    }
}

void CurlEngine::start(Job& job) {
    auto expected = Job::State::waiting;
    if (job.state.compare_exchange_strong(expected, Job::State::started)) {
        perform(job);
    } else {
        forget(job.id);
    }
}

void CurlEngine::perform(Job& job) {
    if (idleHandles_.empty()) {
        job.handle = std::make_unique<CurlHandle>(limits_, watch_);
    } else {
        job.handle = std::move(idleHandles_.back());
        idleHandles_.pop_back();
    }
    const auto notStarted = [](const char* why) {
        return CurlExchange::failed(httpTransportError(HttpTransportError::unknown, why));
    };
    if (!job.handle->easy()) {
        job.handle.reset();
        return end(job, notStarted("out of memory"));
    }
    job.handle->setOwner(&job);
    if (auto error = job.exchange.prepare(*job.handle)) {
        return end(job, CurlExchange::failed(*std::move(error)));
    }
    if (curl_multi_add_handle(multi_, job.handle->easy()) != CURLM_OK) {
        end(job, notStarted("not started"));
    }
}

bool CurlEngine::readMessages() {
    bool isAny = false;
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
        isAny = true;
        const CURLcode code = message->data.result;
        Job& job = *static_cast<Job*>(CurlHandle::of(message->easy_handle).owner());
        watch_.keepConnection(message->easy_handle);
        if (job.exchange.end(*job.handle, code) == CurlExchange::Next::follow) {
            releaseHandle(job);
            perform(job);
        } else {
            end(job, job.exchange.takeOutcome());
        }
    }
    return isAny;
}

void CurlEngine::end(Job& job, TransferOutcome outcome) {
    if (ended_.empty()) {
        firstEnded_ = std::chrono::steady_clock::now();
    }
    ended_.push_back({jobs_.at(job.id), std::move(outcome)});
    forget(job.id);
}

bool CurlEngine::isCompletionDue() const {
    constexpr std::size_t most = 16;
    constexpr std::chrono::microseconds longest(500);
    return !ended_.empty() &&
           (ended_.size() >= most || std::chrono::steady_clock::now() - firstEnded_ >= longest);
}

void CurlEngine::complete() {
    for (Ended& ended : ended_) {
        // A completion may end the engine; those behind it are then not called any more.
        if (!isStopping_ && ended.job->state.exchange(Job::State::settled) != Job::State::settled) {
            ended.job->completion(std::move(ended.outcome));
        }
    }
    ended_.clear();
}

void CurlEngine::forget(RequestSchedule::Id id) {
    const auto found = jobs_.find(id);
    if (found != jobs_.end()) {
        releaseHandle(*found->second);
        schedule_.remove(id);
        jobs_.erase(found);
    }
}

void CurlEngine::releaseHandle(Job& job) {
    if (job.handle) {
        curl_multi_remove_handle(multi_, job.handle->easy());
        job.handle->release();
        idleHandles_.push_back(std::move(job.handle));
    }
}

void CurlEngine::wait() {
    {
        const std::lock_guard lock(mutex_);
        isWaiting_ = added_.empty() && cancelled_.empty() && !isStopping_;
        if (!isWaiting_) {
            return;
        }
    }
    watch_.wait();
}

} // namespace teralune
