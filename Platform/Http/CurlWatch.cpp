#include "Platform/Http/CurlWatch.h"

#include "Platform/Foundation/FatalError.h"

#include <curl/curl.h>

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
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

void CurlWatch::adopt(void* easy) {
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, &onOpen);
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETDATA, this);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, &onClose);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, this);
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
        if (!isWanted(ready.data.fd)) {
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

int CurlWatch::onOpen(void* /*watch*/, int /*purpose*/, curl_sockaddr* address) noexcept {
    return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

int CurlWatch::onClose(void* watch, int socket) noexcept {
    auto& self = *static_cast<CurlWatch*>(watch);
    const auto found = self.kept_.find(socket);
    if (found != self.kept_.end()) {
        // close() alone would not end it while a process that was forked meanwhile has the connection too.
        if (found->second.watched != 0) {
            self.control(EPOLL_CTL_DEL, socket, 0);
        }
        self.kept_.erase(found);
    }
    return close(socket);
}

void CurlWatch::keepConnection(void* easy) noexcept {
    long made = 0;
    curl_easy_getinfo(easy, CURLINFO_NUM_CONNECTS, &made);
    curl_socket_t socket = CURL_SOCKET_BAD;
    if (made == 0 || curl_easy_getinfo(easy, CURLINFO_ACTIVESOCKET, &socket) != CURLE_OK ||
        socket == CURL_SOCKET_BAD) {
        return;
    }
    try {
        kept_.insert_or_assign(socket, Socket{});
    } catch (...) {
        // Without memory for it, the connection is registered for each request anew.
    }
}

/// A socket that can't be watched is left to libcurl's timers, which end its transfer.
int CurlWatch::onSocket(void* /*easy*/, int socket, int what, void* watch, void* known) noexcept {
    auto& self = *static_cast<CurlWatch*>(watch);
    // CURL_POLL_REMOVE has neither bit.
    const std::uint32_t wanted =
        ((what & CURL_POLL_IN) != 0 ? EPOLLIN : 0U) | ((what & CURL_POLL_OUT) != 0 ? EPOLLOUT : 0U);
    const auto kept = self.kept_.find(socket);
    if (kept != self.kept_.end()) {
        self.watchKept(socket, kept->second, wanted);
    } else {
        self.watchOther(socket, known != nullptr, wanted);
    }
    return 0;
}

bool CurlWatch::control(int operation, int socket, std::uint32_t events) const {
    epoll_event event{};
    event.events = events;
    event.data.fd = socket;
    return epoll_ctl(epoll_, operation, socket, &event) == 0;
}

void CurlWatch::watchKept(int socket, Socket& state, std::uint32_t wanted) const {
    state.wanted = wanted;
    // One that is idle stays as it is, unless it is writable and so would end every wait.
    const std::uint32_t watched = wanted != 0 ? wanted : state.watched & EPOLLIN;
    if (watched == state.watched) {
        return;
    }
    if (watched == 0) {
        control(EPOLL_CTL_DEL, socket, 0);
    } else if (!control(EPOLL_CTL_MOD, socket, watched)) {
        control(EPOLL_CTL_ADD, socket, watched);
    }
    state.watched = watched;
}

/// A socket that is about to connect, or one of the pairs by which libcurl hears of its name lookups: both it
/// closes by itself, and it may speak of one that it has closed, and know a new one by the number of an old
/// one.
void CurlWatch::watchOther(int socket, bool isKnown, std::uint32_t wanted) {
    if (wanted == 0) {
        control(EPOLL_CTL_DEL, socket, 0);
        return;
    }
    if (!(isKnown && control(EPOLL_CTL_MOD, socket, wanted)) && !control(EPOLL_CTL_ADD, socket, wanted) &&
        errno == EEXIST) {
        control(EPOLL_CTL_MOD, socket, wanted);
    }
    curl_multi_assign(multi_, socket, this);
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

bool CurlWatch::isWanted(int socket) {
    const auto kept = kept_.find(socket);
    if (kept == kept_.end() || kept->second.wanted != 0) {
        return true;
    }
    control(EPOLL_CTL_DEL, socket, 0);
    kept->second.watched = 0;
    return false;
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
    constexpr std::int64_t longest = 60L * 60 * 1000;
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, longest));
}

} // namespace teralune
