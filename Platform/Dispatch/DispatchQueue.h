#pragma once

#include "Platform/Foundation/UniqueFunction.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace teralune {

/// Runs pieces of work later, on a thread of its own choosing. Every operation may be called from any thread;
/// work is never run inside async() itself. Work that throws ends the program.
class DispatchQueue {
public:
    using Work = UniqueFunction<void()>;

    virtual ~DispatchQueue() = default;

    virtual const std::string& label() const = 0;
    virtual void async(Work work) = 0;
    /// As many calls of async(), in that order, which wake whoever runs the work once.
    virtual void asyncAll(std::vector<Work> work);
    virtual void asyncAfter(std::chrono::milliseconds delay, Work work) = 0;
    /// Whether the calling thread is running a piece of this queue's work.
    virtual bool isCurrent() const = 0;

    /// Runs the work on this queue and waits for its end. Calling it on the queue itself is a fatal error.
    void sync(Work work);
};

} // namespace teralune
