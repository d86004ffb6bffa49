#include "Platform/Http/RequestHandle.h"

#include "Platform/Http/RunningRequest.h"

#include <utility>

namespace teralune {

RequestHandle::RequestHandle(std::weak_ptr<RunningRequest> running) : running_(std::move(running)) {}

RequestHandle& RequestHandle::operator=(RequestHandle&& other) noexcept {
    if (this != &other) {
        cancel();
        running_ = std::move(other.running_);
    }
    return *this;
}

RequestHandle::~RequestHandle() {
    cancel();
}

void RequestHandle::cancel() {
    if (const auto running = running_.lock()) {
        running->cancel();
    }
    detach();
}

void RequestHandle::detach() {
    running_.reset();
}

} // namespace teralune
