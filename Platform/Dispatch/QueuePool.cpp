#include "Platform/Dispatch/QueuePool.h"

#include "Platform/Dispatch/CurrentQueue.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <deque>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <thread>
#include <utility>
#include <vector>

namespace teralune {

namespace asio = boost::asio;

namespace {

constexpr int backgroundNiceness = 10;

} // namespace

/// The threads and the context that they run. It is shared by the pool, its queues and its threads; the
/// context itself goes with the pool, so that work that holds a queue can't keep itself alive.
struct QueuePool::State {
    explicit State(std::size_t threadCount)
        : context(std::make_unique<asio::io_context>(static_cast<int>(threadCount)))
        , keepRunning(context->get_executor()) {}

    std::shared_mutex mutex;
    std::unique_ptr<asio::io_context> context;
    std::optional<asio::executor_work_guard<asio::io_context::executor_type>> keepRunning;
    std::vector<std::thread> threads;
    /// Set when the pool was destroyed on this one of its threads, which then has to clear up after itself.
    std::atomic<std::thread::id> survivor;
    std::atomic<bool> isStopped = false;

    void run(Priority priority) {
        if (priority == Priority::background) {
            setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), backgroundNiceness);
        }
        context->run();
        if (survivor.load() == std::this_thread::get_id()) {
            dropContext();
        }
    }

    void stop() {
        isStopped = true;
        context->stop();
        for (std::thread& thread : threads) {
            if (thread.get_id() == std::this_thread::get_id()) {
                survivor = thread.get_id();
                thread.detach();
            } else {
                thread.join();
            }
        }
        if (survivor.load() == std::thread::id()) {
            dropContext();
        }
    }

    /// Dropped without running when the pool is gone.
    void post(DispatchQueue::Work work) {
        const std::shared_lock lock(mutex);
        if (context) {
            asio::post(*context, std::move(work));
        }
    }

    void postAfter(std::chrono::milliseconds delay, DispatchQueue::Work work) {
        const std::shared_lock lock(mutex);
        if (!context) {
            return;
        }
        auto timer = std::make_unique<asio::steady_timer>(*context, delay);
        asio::steady_timer& waiting = *timer;
        waiting.async_wait([timer = std::move(timer), work = std::move(work)](auto) mutable { work(); });
    }

    void dropContext() {
        std::unique_ptr<asio::io_context> dropped;
        const std::unique_lock lock(mutex);
        keepRunning.reset();
        dropped = std::move(context);
    }
};

class QueuePool::ConcurrentQueue final : public DispatchQueue,
                                         public std::enable_shared_from_this<ConcurrentQueue> {
public:
    ConcurrentQueue(std::shared_ptr<State> pool, std::string label)
        : pool_(std::move(pool))
        , label_(std::move(label)) {}

    const std::string& label() const override { return label_; }
    void async(Work work) override { pool_->post(wrapped(std::move(work))); }
    void asyncAfter(std::chrono::milliseconds delay, Work work) override {
        pool_->postAfter(delay, wrapped(std::move(work)));
    }
    bool isCurrent() const override { return CurrentQueue::is(*this); }

private:
    Work wrapped(Work work) {
        return [queue = shared_from_this(), work = std::move(work)]() mutable noexcept {
            const CurrentQueue current(*queue);
            work();
            work = nullptr;
        };
    }

    std::shared_ptr<State> pool_;
    std::string label_;
};

/// Keeps its own list and has at most one runner in the pool, which takes a few pieces and goes to the back
/// of the pool's line, so that a busy serial queue leaves the threads to others too.
class QueuePool::SerialQueue final : public DispatchQueue, public std::enable_shared_from_this<SerialQueue> {
public:
    SerialQueue(std::shared_ptr<State> pool, std::string label)
        : pool_(std::move(pool))
        , label_(std::move(label)) {}

    const std::string& label() const override { return label_; }

    void async(Work work) override {
        {
            const std::lock_guard lock(mutex_);
            waiting_.push_back(std::move(work));
            if (std::exchange(hasRunner_, true)) {
                return;
            }
        }
        postRunner();
    }

    void asyncAfter(std::chrono::milliseconds delay, Work work) override {
        pool_->postAfter(delay, [queue = shared_from_this(), work = std::move(work)]() mutable {
            queue->async(std::move(work));
        });
    }

    bool isCurrent() const override { return CurrentQueue::is(*this); }

private:
    /// Drops what waits when it is destroyed without having run, which the end of the pool does.
    class Runner {
    public:
        explicit Runner(std::shared_ptr<SerialQueue> queue) : queue_(std::move(queue)) {}
        Runner(Runner&&) noexcept = default;
        Runner& operator=(Runner&&) = delete;
        ~Runner() {
            if (queue_) {
                queue_->dropWaiting();
            }
        }
        void operator()() noexcept { std::exchange(queue_, nullptr)->run(); }

    private:
        std::shared_ptr<SerialQueue> queue_;
    };

    void postRunner() { pool_->post(Runner(shared_from_this())); }

    void run() {
        constexpr int mostPieces = 16;
        for (int count = 0; count < mostPieces; ++count) {
            if (pool_->isStopped) {
                return dropWaiting();
            }
            Work work;
            {
                const std::lock_guard lock(mutex_);
                hasRunner_ = !waiting_.empty();
                if (!hasRunner_) {
                    return;
                }
                work = std::move(waiting_.front());
                waiting_.pop_front();
            }
            const CurrentQueue current(*this);
            work();
            // What the work holds may have destructors with work of their own, which belongs to the queue
            // too.
            work = nullptr;
        }
        postRunner();
    }

    void dropWaiting() {
        std::deque<Work> dropped;
        const std::lock_guard lock(mutex_);
        dropped.swap(waiting_);
        hasRunner_ = false;
    }

    std::shared_ptr<State> pool_;
    std::string label_;
    std::mutex mutex_;
    std::deque<Work> waiting_;
    bool hasRunner_ = false;
};

QueuePool::QueuePool(std::size_t threadCount, Priority priority)
    : state_(std::make_shared<State>(threadCount)) {
    for (std::size_t index = 0; index < threadCount; ++index) {
        std::thread& thread =
            state_->threads.emplace_back([state = state_, priority] { state->run(priority); });
        pthread_setname_np(thread.native_handle(), "queue pool");
    }
}

QueuePool::~QueuePool() {
    state_->stop();
}

std::shared_ptr<DispatchQueue> QueuePool::makeConcurrentQueue(std::string label) {
    return std::make_shared<ConcurrentQueue>(state_, std::move(label));
}

std::shared_ptr<DispatchQueue> QueuePool::makeSerialQueue(std::string label) {
    return std::make_shared<SerialQueue>(state_, std::move(label));
}

} // namespace teralune
