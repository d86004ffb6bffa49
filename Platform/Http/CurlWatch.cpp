#include "Platform/Http/CurlWatch.h"

#include "Platform/Foundation/FatalError.h"

#include <curl/curl.h>

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace teralune {

CurlWatch::CurlWatch()
    : epoll_(epoll_create1(EPOLL_CLOEXEC))
    , event_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    epoll_event woken{EPOLLIN, {.fd = event_}};
    if (epoll_ < 0 || event_ < 0 || epoll_ctl(epoll_, EPOLL_CTL_ADD, event_, &woken) != 0) {
        fatalError("The HTTP engine found no file descriptor left.");
    }
}

CurlWatch::~CurlWatch() {
    close(event_);
    close(epoll_);
}

void CurlWatch::attach(void* multi) {
    multi_ = multi;
    curl_multi_setopt(multi, CURLMOPT_SOCKETFUNCTION, &onSocket);
    curl_multi_setopt(multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(multi, CURLMOPT_TIMERFUNCTION, &onTimer);
    curl_multi_setopt(multi, CURLMOPT_TIMERDATA, this);
}

void CurlWatch::performDue() {
    if (due_ && *due_ <= std::chrono::steady_clock::now()) {
        // libcurl names the next moment meanwhile, or the same one again if this came too early for it.
        due_.reset();
        act(CURL_SOCKET_TIMEOUT, 0);
    }
}

bool CurlWatch::perform(int milliseconds) {
    epoll_event events[64];
    const int count = epoll_wait(epoll_, events, std::size(events), milliseconds);
    for (int index = 0; index < count; ++index) {
        const epoll_event& ready = events[index];
        if (ready.data.fd == event_) {
            eventfd_t ignored = 0;
            eventfd_read(event_, &ignored);
            continue;
        }
        const bool isBroken = (ready.events & (EPOLLERR | EPOLLHUP)) != 0;
        act(ready.data.fd, ((ready.events & EPOLLIN) != 0 || isBroken ? CURL_CSELECT_IN : 0) |
                               ((ready.events & EPOLLOUT) != 0 ? CURL_CSELECT_OUT : 0) |
                               ((ready.events & EPOLLERR) != 0 ? CURL_CSELECT_ERR : 0));
    }
    return count > 0;
}

void CurlWatch::wake() const {
    eventfd_write(event_, 1);
}

/// A socket that can't be watched is left to libcurl's timers, which end its transfer.
int CurlWatch::onSocket(void* /*easy*/, int socket, int what, void* watch, void* known) noexcept {
    const auto& self = *static_cast<CurlWatch*>(watch);
    if (what == CURL_POLL_REMOVE) {
        epoll_ctl(self.epoll_, EPOLL_CTL_DEL, socket, nullptr);
        return 0;
    }
    epoll_event wanted{};
    wanted.events =
        ((what & CURL_POLL_IN) != 0 ? EPOLLIN : 0U) | ((what & CURL_POLL_OUT) != 0 ? EPOLLOUT : 0U);
    wanted.data.fd = socket;
    // libcurl may speak of a socket it has closed, and know a new one by the number of an old one.
    const bool isKnown = known && epoll_ctl(self.epoll_, EPOLL_CTL_MOD, socket, &wanted) == 0;
    if (!isKnown && epoll_ctl(self.epoll_, EPOLL_CTL_ADD, socket, &wanted) != 0 && errno == EEXIST) {
        epoll_ctl(self.epoll_, EPOLL_CTL_MOD, socket, &wanted);
    }
    curl_multi_assign(self.multi_, socket, watch);
    return 0;
}

int CurlWatch::onTimer(void* /*multi*/, long milliseconds, void* watch) noexcept {
    auto& due = static_cast<CurlWatch*>(watch)->due_;
    if (milliseconds < 0) {
        due.reset();
    } else {
        due = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    }
    return 0;
}

void CurlWatch::act(int socket, int events) {
    int running = 0;
    curl_multi_socket_action(multi_, socket, events, &running);
}

int CurlWatch::millisecondsLeft() const {
    if (!due_) {
        return -1;
    }
    // Rounded up, so that the wait does not end just before the moment and spin.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due_ - std::chrono::steady_clock::now());
    constexpr std::int64_t longest = 60 * 60 * 1000;
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, longest));
}

} // namespace teralune
