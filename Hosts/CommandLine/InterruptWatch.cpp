#include "Hosts/CommandLine/InterruptWatch.h"

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/FatalError.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace teralune {
namespace {

constexpr std::uint64_t interrupted = 1;
constexpr std::uint64_t ended = std::uint64_t{1} << 32U;

/// A signal handler may do no more than write to a descriptor that is known to it.
int wakeDescriptor = -1;

void wake(std::uint64_t why) {
    [[maybe_unused]] const ssize_t written = ::write(wakeDescriptor, &why, sizeof why);
}

void handleInterrupt(int) {
    const int savedError = errno;
    wake(interrupted);
    errno = savedError;
}

void install(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    ::sigaction(SIGINT, &action, nullptr);
}

} // namespace

InterruptWatch::InterruptWatch(std::shared_ptr<DispatchQueue> queue, std::function<void()> onInterrupt) {
    wakeDescriptor = ::eventfd(0, EFD_CLOEXEC);
    if (wakeDescriptor < 0)
        fatalError("There is no descriptor left to watch for an interrupt");
    install(handleInterrupt);
    thread_ = std::thread([queue = std::move(queue), onInterrupt = std::move(onInterrupt)] {
        std::uint64_t why = 0;
        while (why < ended) {
            if (::read(wakeDescriptor, &why, sizeof why) != sizeof why)
                continue;
            if ((why & (ended - 1)) != 0)
                queue->async(onInterrupt);
        }
    });
}

InterruptWatch::~InterruptWatch() {
    install(SIG_DFL);
    wake(ended);
    thread_.join();
    ::close(wakeDescriptor);
    wakeDescriptor = -1;
}

} // namespace teralune
