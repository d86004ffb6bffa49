#include "Platform/Foundation/WakeEvent.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <system_error>

namespace teralune {
namespace {

int millisecondsUntil(WakeEvent::Deadline deadline) {
    if (!deadline)
        return -1;
    // Rounded up, so that the wait does not end just before the deadline and spin.
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
    constexpr std::int64_t longest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, longest));
}

} // namespace

Result<WakeEvent> WakeEvent::make() {
    FileDescriptor descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!descriptor)
        return Error{"WakeEvent", errno, std::generic_category().message(errno), {}};
    return WakeEvent(std::move(descriptor));
}

void WakeEvent::signal() const {
    const std::uint64_t one = 1;
    // The only way this fails is a counter that is full, and then the waiter is woken as well.
    [[maybe_unused]] const ssize_t ignored = ::write(descriptor_.get(), &one, sizeof one);
}

bool WakeEvent::wait(std::vector<pollfd>& descriptors, Deadline deadline) const {
    descriptors.push_back({descriptor_.get(), POLLIN, 0});
    int ready = 0;
    do {
        ready = ::poll(descriptors.data(), descriptors.size(), millisecondsUntil(deadline));
    } while (ready < 0 && errno == EINTR);
    const bool signalled = ready > 0 && descriptors.back().revents != 0;
    descriptors.pop_back();
    if (ready < 0)
        std::for_each(descriptors.begin(), descriptors.end(), [](pollfd& entry) { entry.revents = 0; });
    return signalled;
}

} // namespace teralune
