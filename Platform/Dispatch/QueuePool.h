#pragma once

#include "Platform/Dispatch/DispatchQueue.h"

#include <cstddef>
#include <memory>
#include <string>

namespace teralune {

/// A fixed set of threads and the queues that run on them. Its destructor waits for the work that is running
/// and drops, without running it, what has not begun; queues it made may outlive it and then drop work too.
/// It may be destroyed by its own work; then only the other threads are waited for.
class QueuePool {
public:
    enum class Priority { standard, background };

    QueuePool(std::size_t threadCount, Priority priority);
    ~QueuePool();
    QueuePool(const QueuePool&) = delete;
    QueuePool& operator=(const QueuePool&) = delete;

    /// Pieces of work may run at the same time and in any order.
    std::shared_ptr<DispatchQueue> makeConcurrentQueue(std::string label);
    /// One piece of work after the other, in the order of their async().
    std::shared_ptr<DispatchQueue> makeSerialQueue(std::string label);

private:
    struct State;
    class ConcurrentQueue;
    class SerialQueue;

    std::shared_ptr<State> state_;
};

} // namespace teralune
