#pragma once

#include "Platform/Tasks/Task.h"

#include <functional>

namespace teralune {

namespace tasks {

/// What the task of a continuation carries, by what the continuation returns.
template<class Returned>
struct Carried {
    static_assert(!std::is_same_v<Returned, Error>, "A continuation that may fail returns a Result.");
    using Type = Returned;
};
template<class T>
struct Carried<Result<T>> {
    using Type = T;
};
template<class T>
struct Carried<Task<T>> {
    using Type = T;
};

template<class T>
inline constexpr bool isTask = false;
template<class T>
inline constexpr bool isTask<Task<T>> = true;

/// Calls a success continuation with the value, or with nothing where there is none.
template<class T, class Continuation>
decltype(auto) callWithValue(Continuation& continuation, const Result<T>& result) {
    if constexpr (std::is_void_v<T>) {
        return std::invoke(continuation);
    } else {
        return std::invoke(continuation, result.value());
    }
}

} // namespace tasks

template<class T>
void Task<T>::deliver(const std::shared_ptr<State>& state, const std::shared_ptr<DispatchQueue>& queue,
                      Waiter waiter) {
    if (!queue) {
        waiter(*state->outcome);
        return;
    }
    queue->async([state, waiter = std::move(waiter)]() mutable { waiter(*state->outcome); });
}

template<class T>
void Task<T>::addWaiter(std::shared_ptr<DispatchQueue> queue, Waiter waiter) const {
    {
        const std::lock_guard lock(state_->mutex);
        if (!state_->outcome || state_->delivering) {
            state_->waiters.emplace_back(std::move(queue), std::move(waiter));
            return;
        }
    }
    deliver(state_, queue, std::move(waiter));
}

template<class T>
template<class Continuation>
auto Task<T>::continueWith(std::shared_ptr<DispatchQueue> queue, Continuation continuation) const {
    using Returned = std::decay_t<std::invoke_result_t<Continuation&, const Result<T>&>>;
    using Next = typename tasks::Carried<Returned>::Type;
    TaskCompletionSource<Next> source;
    addWaiter(std::move(queue),
              [source, continuation = std::move(continuation)](const Result<T>& result) mutable {
                  if constexpr (std::is_void_v<Returned>) {
                      std::invoke(continuation, result);
                      source.complete(Result<void>());
                  } else if constexpr (tasks::isTask<Returned>) {
                      source.completeWith(std::invoke(continuation, result));
                  } else {
                      source.complete(std::invoke(continuation, result));
                  }
              });
    return source.task();
}

template<class T>
template<class Continuation>
auto Task<T>::onSuccess(std::shared_ptr<DispatchQueue> queue, Continuation continuation) const {
    using Returned =
        std::decay_t<decltype(tasks::callWithValue<T>(continuation, std::declval<const Result<T>&>()))>;
    using Next = typename tasks::Carried<Returned>::Type;
    return continueWith(std::move(queue),
                        [continuation = std::move(continuation)](const Result<T>& result) mutable {
                            if constexpr (tasks::isTask<Returned>) {
                                return result ? tasks::callWithValue<T>(continuation, result)
                                              : Task<Next>::forResult(result.error());
                            } else if constexpr (std::is_void_v<Returned>) {
                                if (result) {
                                    tasks::callWithValue<T>(continuation, result);
                                    return Result<void>();
                                }
                                return Result<void>(result.error());
                            } else {
                                return result ? Result<Next>(tasks::callWithValue<T>(continuation, result))
                                              : Result<Next>(result.error());
                            }
                        });
}

template<class T>
bool TaskCompletionSource<T>::complete(Result<T> result) const {
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->outcome) {
            return false;
        }
        state_->outcome.emplace(std::move(result));
        state_->delivering = true;
    }
    while (true) {
        decltype(state_->waiters) waiters;
        {
            const std::lock_guard lock(state_->mutex);
            waiters.swap(state_->waiters);
            if (waiters.empty()) {
                state_->delivering = false;
                return true;
            }
        }
        for (auto& [queue, waiter] : waiters) {
            Task<T>::deliver(state_, queue, std::move(waiter));
        }
    }
}

template<class T>
void TaskCompletionSource<T>::completeWith(const Task<T>& other) const {
    other.addWaiter(nullptr, [source = *this](const Result<T>& result) { source.complete(result); });
}

} // namespace teralune
