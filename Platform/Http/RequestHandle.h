#pragma once

#include <memory>

namespace teralune {

class RunningRequest;

/// A request that was sent. Dropping the handle cancels it: its handler is then told the error -999, unless
/// it has ended already. detach() lets it run on without a handle. Usable from any thread.
class [[nodiscard]] RequestHandle {
public:
    RequestHandle() = default;
    explicit RequestHandle(std::weak_ptr<RunningRequest> running);
    RequestHandle(RequestHandle&&) noexcept = default;
    RequestHandle& operator=(RequestHandle&& other) noexcept;
    ~RequestHandle();

    void cancel();
    void detach();

private:
    std::weak_ptr<RunningRequest> running_;
};

} // namespace teralune
