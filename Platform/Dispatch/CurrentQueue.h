#pragma once

namespace teralune {

class DispatchQueue;

/// Marks the calling thread, for as long as the object lives, as running a piece of this queue's work. Every
/// kind of queue wraps one around each piece; they nest when a piece of work drains another queue.
class CurrentQueue {
public:
    explicit CurrentQueue(const DispatchQueue& queue);
    ~CurrentQueue();
    CurrentQueue(const CurrentQueue&) = delete;
    CurrentQueue& operator=(const CurrentQueue&) = delete;

    static bool is(const DispatchQueue& queue);

private:
    const DispatchQueue* queue_;
    const CurrentQueue* outer_;
};

} // namespace teralune
