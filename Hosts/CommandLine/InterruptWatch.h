#pragma once

#include <functional>
#include <memory>
#include <thread>

namespace teralune {

class DispatchQueue;

/// Turns the first Ctrl-C into a piece of work on a queue. A second one ends the process as usual. One at a
/// time in a process.
class InterruptWatch {
public:
    InterruptWatch(std::shared_ptr<DispatchQueue> queue, std::function<void()> onInterrupt);
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

private:
    std::thread thread_;
};

} // namespace teralune
