#include "Platform/Dispatch/DispatchQueue.h"

#include "Platform/Dispatch/CountingSemaphore.h"
#include "Platform/Foundation/FatalError.h"

namespace teralune {

namespace {

/// Signals when the piece of work that holds it is gone, be it run or dropped: a queue that ends must not
/// leave the waiting thread behind.
class EndSignal {
public:
    explicit EndSignal(std::shared_ptr<CountingSemaphore> ended) : ended_(std::move(ended)) {}
    EndSignal(EndSignal&&) noexcept = default;
    EndSignal& operator=(EndSignal&&) = delete;
    ~EndSignal() {
        if (ended_) {
            ended_->signal();
        }
    }

private:
    std::shared_ptr<CountingSemaphore> ended_;
};

} // namespace

void DispatchQueue::asyncAll(std::vector<Work> work) {
    for (Work& piece : work) {
        async(std::move(piece));
    }
}

void DispatchQueue::sync(Work work) {
    if (isCurrent()) {
        fatalError("sync() was called on the queue that it would wait for: " + label());
    }
    const auto ended = std::make_shared<CountingSemaphore>(0);
    // Members go in reverse order: the work is gone before the signal.
    struct Piece {
        EndSignal signal;
        Work work;
        void operator()() { work(); }
    };
    async(Piece{EndSignal(ended), std::move(work)});
    ended->wait();
}

} // namespace teralune
