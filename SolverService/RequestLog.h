#pragma once

#include "SolverService/Http/ReceivedRequest.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace teralune::service {

/// What the service received, kept byte for byte. A request is in the log before anything answers it, so
/// a client that has its reply finds it here. Used from any thread.
class RequestLog {
public:
    /// Keeps the latest kept requests; counts all.
    explicit RequestLog(std::size_t kept) : kept_(kept) {}

    void record(const ReceivedRequest& request);

    /// The kept requests in the order in which they came in: all, or those to one path.
    std::vector<ReceivedRequest> requests() const;
    std::vector<ReceivedRequest> requestsTo(std::string_view path) const;

    /// How many requests to the path have come in since the start or since clear().
    std::size_t count(std::string_view path) const;
    /// Waits until at least so many have; false when the limit passed first.
    bool waitForCount(std::string_view path, std::size_t count, std::chrono::milliseconds limit) const;

    void clear();

private:
    std::size_t countLocked(std::string_view path) const;

    const std::size_t kept_;
    mutable std::mutex mutex_;
    mutable std::condition_variable arrived_;
    std::deque<ReceivedRequest> requests_;
    std::map<std::string, std::size_t, std::less<>> counts_;
};

} // namespace teralune::service
