#include "Platform/Dispatch/CurrentQueue.h"

namespace teralune {

namespace {

thread_local const CurrentQueue* innermost = nullptr;

} // namespace

CurrentQueue::CurrentQueue(const DispatchQueue& queue) : queue_(&queue), outer_(innermost) {
    innermost = this;
}

CurrentQueue::~CurrentQueue() {
    innermost = outer_;
}

bool CurrentQueue::is(const DispatchQueue& queue) {
    for (const CurrentQueue* each = innermost; each != nullptr; each = each->outer_) {
        if (each->queue_ == &queue) {
            return true;
        }
    }
    return false;
}

} // namespace teralune
