#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <unordered_map>

struct curl_sockaddr;

namespace teralune {

/// What a multi handle of libcurl waits for: its sockets, its timer, and a wake from outside. Carries the
/// transfers on when one of them comes. With it a turn of the engine costs what became ready, not what is
/// open. A connection stays registered with the kernel between two requests, which saves two calls for each.
/// Used by the engine's thread, but for wake().
class CurlWatch {
public:
    CurlWatch();
    ~CurlWatch();
    CurlWatch(const CurlWatch&) = delete;
    CurlWatch& operator=(const CurlWatch&) = delete;

    /// Takes over the waiting for a multi handle, which it must outlive.
    void attach(void* multi);
    /// Takes over the opening and closing of an easy handle's sockets. Connections outlive the handle, and
    /// are closed with the multi handle at the latest.
    void adopt(void* easy);
    /// At the end of a transfer: has the connection that it made stay registered from then on. Only of such a
    /// socket is it certain that its closing is seen; one that never became a connection libcurl closes by
    /// itself.
    void keepConnection(void* easy) noexcept;
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

    /// A connection's.
    struct Socket {
        std::uint32_t wanted = 0;  ///< what libcurl waits for, as events of epoll
        std::uint32_t watched = 0; ///< what the kernel was told; nought when it does not know the socket
    };

    static int onOpen(void* watch, int purpose, curl_sockaddr* address) noexcept;
    static int onClose(void* watch, int socket) noexcept;
    static int onSocket(void* easy, int socket, int what, void* watch, void* known) noexcept;
    static int onTimer(void* multi, long milliseconds, void* watch) noexcept;
    bool perform(int milliseconds);
    bool control(int operation, int socket, std::uint32_t events) const;
    void watchKept(int socket, Socket& state, std::uint32_t wanted) const;
    void watchOther(int socket, bool isKnown, std::uint32_t wanted);
    /// Whether an event at the socket is libcurl's business. One at a connection that nobody uses is not: it
    /// is looked at before the next request, and until then not watched.
    bool isWanted(int socket);
    void act(int socket, int events);
    int millisecondsLeft() const;

    const int epoll_;
    const int event_; ///< an eventfd
    void* multi_ = nullptr;
    std::unordered_map<int, Socket> kept_;
    std::optional<Moment> due_;
};

} // namespace teralune
