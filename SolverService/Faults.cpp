#include "SolverService/Faults.h"

#include <algorithm>

namespace teralune::service {

Fault Fault::answer(int status, std::string body, std::string contentType) {
    Fault fault;
    fault.reply = ServiceReply{status, std::move(contentType), std::move(body), {}};
    return fault;
}

Fault Fault::redirect(std::string location, int status) {
    Fault fault = answer(status);
    fault.reply->headers.emplace_back("Location", std::move(location));
    return fault;
}

Fault Fault::delayed(std::chrono::milliseconds delay) {
    Fault fault;
    fault.delay = delay;
    return fault;
}

Fault Fault::hold() {
    Fault fault;
    fault.held = true;
    return fault;
}

Fault Fault::hangUp() {
    Fault fault;
    fault.ending = Ending::hungUp;
    return fault;
}

Fault Fault::cutBody() {
    Fault fault;
    fault.ending = Ending::cutInBody;
    return fault;
}

Fault Fault::also(const Fault& other) const {
    Fault both = *this;
    both.held = both.held || other.held;
    both.delay += other.delay;
    if (other.reply) {
        both.reply = other.reply;
    }
    if (other.ending != Ending::complete) {
        both.ending = other.ending;
    }
    return both;
}

void Faults::script(std::string_view path, Fault fault, std::size_t times) {
    const std::lock_guard lock(mutex_);
    scripts_.push_back(Script{std::string(path), std::move(fault), times});
}

void Faults::clear() {
    const std::lock_guard lock(mutex_);
    scripts_.clear();
}

void Faults::release() {
    {
        const std::lock_guard lock(mutex_);
        ++releases_;
    }
    changed_.notify_all();
}

bool Faults::waitForHeld(std::size_t count, std::chrono::milliseconds limit) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return held_ >= count; });
}

std::optional<Fault> Faults::take(std::string_view path) {
    const std::lock_guard lock(mutex_);
    const auto find = [this](std::string_view wanted) {
        return std::find_if(scripts_.begin(), scripts_.end(),
                            [&](const Script& script) { return script.path == wanted && script.left > 0; });
    };
    auto found = find(path);
    if (found == scripts_.end()) {
        found = find(everyPath);
    }
    if (found == scripts_.end()) {
        return std::nullopt;
    }
    Fault fault = found->fault;
    if (found->left != everyTime && --found->left == 0) {
        scripts_.erase(found);
    }
    return fault;
}

void Faults::pause(const Fault& fault) {
    std::unique_lock lock(mutex_);
    if (fault.held) {
        const std::size_t before = releases_;
        ++held_;
        changed_.notify_all();
        changed_.wait(lock, [&] { return releases_ != before || stopped_; });
        --held_;
    }
    if (fault.delay.count() > 0) {
        changed_.wait_for(lock, fault.delay, [&] { return stopped_; });
    }
}

void Faults::stop() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    changed_.notify_all();
}

} // namespace teralune::service
