#include "SolverService/RequestLog.h"

#include <algorithm>
#include <iterator>

namespace teralune::service {

namespace {

/// Paths are the client's to invent, so not every one of them gets a counter for ever.
constexpr std::size_t countedPaths = 1000;

} // namespace

void RequestLog::record(const ReceivedRequest& request) {
    {
        const std::lock_guard lock(mutex_);
        const auto counter = counts_.find(request.path());
        if (counter != counts_.end()) {
            ++counter->second;
        } else if (counts_.size() < countedPaths) {
            counts_.emplace(request.path(), 1);
        }
        requests_.push_back(request);
        if (requests_.size() > kept_) {
            requests_.pop_front();
        }
    }
    arrived_.notify_all();
}

std::vector<ReceivedRequest> RequestLog::requests() const {
    const std::lock_guard lock(mutex_);
    return {requests_.begin(), requests_.end()};
}

std::vector<ReceivedRequest> RequestLog::requestsTo(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    std::vector<ReceivedRequest> found;
    std::copy_if(requests_.begin(), requests_.end(), std::back_inserter(found),
                 [&](const ReceivedRequest& request) { return request.path() == path; });
    return found;
}

std::size_t RequestLog::countLocked(std::string_view path) const {
    const auto counter = counts_.find(path);
    return counter == counts_.end() ? 0 : counter->second;
}

std::size_t RequestLog::count(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    return countLocked(path);
}

bool RequestLog::waitForCount(std::string_view path, std::size_t count,
                              std::chrono::milliseconds limit) const {
    std::unique_lock lock(mutex_);
    return arrived_.wait_for(lock, limit, [&] { return countLocked(path) >= count; });
}

void RequestLog::clear() {
    const std::lock_guard lock(mutex_);
    requests_.clear();
    counts_.clear();
}

} // namespace teralune::service
