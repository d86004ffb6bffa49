#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace teralune {

/// What a multi handle of libcurl waits for: its sockets, its timer, and a wake from outside. Carries the
/// transfers on when one of them comes. With it a turn of the engine costs what became ready, not what is
/// open. Used by the engine's thread, but for wake().
class CurlWatch {
public:
    CurlWatch();
    ~CurlWatch();
    CurlWatch(const CurlWatch&) = delete;
    CurlWatch& operator=(const CurlWatch&) = delete;

    /// Takes over the waiting for a multi handle, which it must outlive.
    void attach(void* multi);
    /// Carries on what is due without waiting: transfers that were just added, and those whose time is up.
    void performDue();
    /// Does what there is to do at the sockets and returns whether there was anything.
    bool performReady() { return perform(0); }
    /// Waits until there is something to do, and does it. Returns after a wake too.
    void wait() {
        perform(millisecondsLeft());
        performDue();
    }
    /// Ends the present wait or else the next. Any thread.
    void wake() const;

private:
    using Moment = std::chrono::steady_clock::time_point;

    static int onSocket(void* easy, int socket, int what, void* watch, void* known) noexcept;
    static int onTimer(void* multi, long milliseconds, void* watch) noexcept;
    bool perform(int milliseconds);
    void act(int socket, int events);
    int millisecondsLeft() const;

    const int epoll_;
    const int event_; ///< an eventfd
    void* multi_ = nullptr;
    std::optional<Moment> due_;
};

} // namespace teralune
