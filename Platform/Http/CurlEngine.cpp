#include "Platform/Http/CurlEngine.h"

#include "Platform/Foundation/FatalError.h"
#include "Platform/Http/HttpError.h"

#include <curl/curl.h>
#include <openssl/crypto.h>

#include <sys/eventfd.h>
#include <unistd.h>

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
    return engine;
}

CurlEngine::CurlEngine(const CurlTransport::Limits& limits)
    : limits_(limits)
    , event_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
    , schedule_(limits.transfersPerHost, limits.transfers) {
    if (event_ < 0) {
        fatalError("The HTTP engine found no file descriptor left.");
    }
}

CurlEngine::~CurlEngine() {
    close(event_);
}

std::shared_ptr<CurlEngine::Job> CurlEngine::add(URLRequest request, TransferLane lane,
                                                 HttpTransport::Completion completion) {
    auto job = std::make_shared<Job>(limits_, std::move(request), lane, std::move(completion));
    const std::lock_guard lock(mutex_);
    job->id = ++lastId_;
    added_.push_back(job);
    wake();
    return job;
}

void CurlEngine::cancel(Job& job) {
    if (!job.isSettled.exchange(true)) {
        const std::lock_guard lock(mutex_);
        cancelled_.push_back(job.id);
        wake();
    }
}

void CurlEngine::stop() {
    {
        const std::lock_guard lock(mutex_);
        isStopping_ = true;
        wake();
    }
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

/// What became free or came in is started before the engine sleeps, and what was started is performed once:
/// a poll before that would wait for sockets that do not exist yet.
void CurlEngine::run() {
    multi_ = curl_multi_init();
    curl_multi_setopt(multi_, CURLMOPT_MAXCONNECTS, static_cast<long>(limits_.transfers + 4));
    while (takeCommands()) {
        startWaiting();
        int running = 0;
        curl_multi_perform(multi_, &running);
        readMessages();
        startWaiting();
        wait();
    }
    for (const auto& [id, job] : jobs_) {
        releaseHandle(*job);
    }
    for (void* easy : idleHandles_) {
        curl_easy_cleanup(easy);
    }
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
        perform(*jobs_.at(*id));
    }
}

void CurlEngine::perform(Job& job) {
    if (idleHandles_.empty()) {
        job.easy = curl_easy_init();
    } else {
        job.easy = idleHandles_.back();
        idleHandles_.pop_back();
    }
    if (!job.easy) {
        return finish(job,
                      CurlExchange::failed(httpTransportError(HttpTransportError::unknown, "out of memory")));
    }
    if (auto error = job.exchange.prepare(job.easy)) {
        return finish(job, CurlExchange::failed(*std::move(error)));
    }
    curl_easy_setopt(job.easy, CURLOPT_PRIVATE, &job);
    if (curl_multi_add_handle(multi_, job.easy) != CURLM_OK) {
        finish(job, CurlExchange::failed(httpTransportError(HttpTransportError::unknown, "not started")));
    }
}

void CurlEngine::readMessages() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
        void* const easy = message->easy_handle;
        const CURLcode code = message->data.result;
        Job* job = nullptr;
        curl_easy_getinfo(easy, CURLINFO_PRIVATE, &job);
        const CurlExchange::Next next = job->exchange.end(easy, code);
        if (next == CurlExchange::Next::follow) {
            releaseHandle(*job);
            perform(*job);
        } else {
            finish(*job, job->exchange.takeOutcome());
        }
    }
}

void CurlEngine::finish(Job& job, TransferOutcome outcome) noexcept {
    const std::shared_ptr<Job> kept = jobs_.at(job.id);
    forget(job.id);
    if (!job.isSettled.exchange(true)) {
        job.completion(std::move(outcome));
    }
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
    if (job.easy) {
        curl_multi_remove_handle(multi_, job.easy);
        curl_easy_reset(job.easy);
        idleHandles_.push_back(std::exchange(job.easy, nullptr));
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
    constexpr int longWait = 60 * 60 * 1000;
    curl_waitfd event{event_, CURL_WAIT_POLLIN, 0};
    curl_multi_poll(multi_, &event, 1, longWait, nullptr);
    if (event.revents != 0) {
        eventfd_t count = 0;
        eventfd_read(event_, &count);
    }
}

/// With the lock held.
void CurlEngine::wake() {
    if (std::exchange(isWaiting_, false)) {
        eventfd_write(event_, 1);
    }
}

} // namespace teralune
