#pragma once

#include "Platform/Memory/MemoryPressureWatch.h"

#include <chrono>
#include <memory>

namespace teralune {

class DispatchQueue;

/// Tells when memory becomes short and when it no longer is: each change of level once, on the given queue.
/// Set up and resumed from one thread, once; has one thread of its own, which sleeps until the system
/// signals. Dropping the source ends it: no call begins after, but one that is under way on another thread
/// may still end.
///
/// A system without anything to watch is no failure: then nothing is ever told, there is no thread, and
/// resume() lets the handler go.
class MemoryPressureSource {
public:
    using EventHandler = std::function<void(MemoryPressureLevel)>;

    explicit MemoryPressureSource(std::shared_ptr<DispatchQueue> queue,
                                  MemoryPressureSurroundings surroundings = {},
                                  std::chrono::milliseconds quietPeriod = std::chrono::seconds(10));
    ~MemoryPressureSource();
    MemoryPressureSource(const MemoryPressureSource&) = delete;
    MemoryPressureSource& operator=(const MemoryPressureSource&) = delete;

    /// Called before resume(). The handler may own the source.
    void setEventHandler(EventHandler handler);
    void resume();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace teralune
