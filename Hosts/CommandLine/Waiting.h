#pragma once

#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Foundation/UniqueFunction.h"
#include "Platform/Tasks/Task.h"

#include <optional>

namespace teralune {

/// Starts an operation and runs the main queue until it has called its completion. A host without an event
/// loop waits in this way: its main thread must be free to run what it waits for. The operation must not drop
/// its completion.
template<class Value>
Value waitFor(MainQueue& queue, UniqueFunction<void(UniqueFunction<void(Value)>)> start) {
    std::optional<Value> outcome;
    start([&outcome](Value value) { outcome.emplace(std::move(value)); });
    queue.runUntil([&outcome] { return outcome.has_value(); });
    return std::move(*outcome);
}

/// The same for a task.
template<class Value>
Result<Value> waitFor(const std::shared_ptr<MainQueue>& queue, const Task<Value>& task) {
    std::optional<Result<Value>> outcome;
    (void)task.continueWith(queue, [&outcome](const Result<Value>& result) { outcome.emplace(result); });
    queue->runUntil([&outcome] { return outcome.has_value(); });
    return std::move(*outcome);
}

} // namespace teralune
