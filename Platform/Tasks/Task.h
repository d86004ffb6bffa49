#pragma once

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/Result.h"

#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace teralune {

template<class T>
class Task;
template<class T>
class TaskCompletionSource;

/// Ends when all have ended: successfully when all did, otherwise with the first error in the list's order.
Task<void> whenAll(std::vector<Task<void>> tasks);

/// The one-time outcome of an asynchronous operation: a result or an error. Copies share the outcome.
/// Continuations run on the queue that is named with them, once, in the order in which they were added, never
/// inside the call that adds them. They are dropped without running only when the queue itself is gone.
template<class T>
class [[nodiscard]] Task {
public:
    static Task forResult(Result<T> result) {
        TaskCompletionSource<T> source;
        source.complete(std::move(result));
        return source.task();
    }

    /// The outcome, once there is one.
    std::optional<Result<T>> outcome() const {
        const std::lock_guard lock(state_->mutex);
        return state_->outcome;
    }
    bool isCompleted() const { return outcome().has_value(); }

    /// Runs the continuation with the outcome, whatever it is. It may return nothing, a value, a Result or a
    /// Task; the task that comes back ends as that does.
    template<class Continuation>
    auto continueWith(std::shared_ptr<DispatchQueue> queue, Continuation continuation) const;

    /// As above, but only after a success and with its value; an error passes by to the task that comes back.
    template<class Continuation>
    auto onSuccess(std::shared_ptr<DispatchQueue> queue, Continuation continuation) const;

private:
    template<class>
    friend class Task;
    template<class>
    friend class TaskCompletionSource;
    friend Task<void> whenAll(std::vector<Task<void>> tasks);

    using Waiter = UniqueFunction<void(const Result<T>&)>;
    /// The outcome never changes once it is there, and is then read without the lock.
    struct State {
        std::mutex mutex;
        std::optional<Result<T>> outcome;
        /// While the waiters are being handed to their queues, later ones line up behind them.
        bool delivering = false;
        std::vector<std::pair<std::shared_ptr<DispatchQueue>, Waiter>> waiters;
    };

    explicit Task(std::shared_ptr<State> state) : state_(std::move(state)) {}
    /// Without a queue the waiter runs at once on the thread that completes the task; only for waiters that
    /// do no more than complete another task.
    void addWaiter(std::shared_ptr<DispatchQueue> queue, Waiter waiter) const;
    static void deliver(const std::shared_ptr<State>& state, const std::shared_ptr<DispatchQueue>& queue,
                        Waiter waiter);

    std::shared_ptr<State> state_;
};

/// The side that ends a task. The first completion counts; later ones return false and change nothing.
/// A source that is dropped without completing leaves its task pending for ever, so operations complete it on
/// every path.
template<class T>
class TaskCompletionSource {
public:
    TaskCompletionSource() : state_(std::make_shared<typename Task<T>::State>()) {}

    Task<T> task() const { return Task<T>(state_); }
    bool complete(Result<T> result) const;
    /// Completes with the other task's outcome once it has one.
    void completeWith(const Task<T>& other) const;

private:
    std::shared_ptr<typename Task<T>::State> state_;
};

} // namespace teralune

#include "Platform/Tasks/Task.inl.h"
