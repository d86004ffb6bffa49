#pragma once

#include "Platform/Http/HttpHeaders.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace teralune {

/// An HTTP server on 127.0.0.1 that sends exactly the bytes a test wants, right or wrong, and keeps exactly
/// the bytes it received. Each connection has a thread; the script runs on it and may be called by several at
/// once.
class LoopbackServer {
public:
    struct Request {
        std::string head; ///< request line and fields, with the empty line
        std::string body; ///< as long as Content-Length says

        std::string target() const;
        /// The values of the fields of that name, and the first of them or ""; without case.
        std::vector<std::string> headers(std::string_view name) const;
        std::string header(std::string_view name) const;
    };

    /// Pieces of bytes, each of which may wait for release(); then the next request, or the end of the
    /// connection.
    class Reply {
    public:
        Reply() = default;
        /// A well-formed reply; a Content-Length is added.
        Reply(int status, std::string_view body, const HttpHeaders& headers = {});
        static Reply bytes(std::string raw) { return Reply().then(std::move(raw)); }

        Reply&& then(std::string raw) &&;
        /// What follows is sent once the test has released this name.
        Reply&& hold(std::string name) &&;
        Reply&& hangUp() &&;

    private:
        friend class LoopbackServer;
        struct Step {
            std::string bytes;
            std::string held;
        };
        std::vector<Step> steps_;
        bool hangsUp_ = false;
    };

    using Script = std::function<Reply(const Request&)>;

    explicit LoopbackServer(Script script);
    ~LoopbackServer();

    std::string host() const;
    std::string url(std::string_view path = "/") const { return "http://" + host() + std::string(path); }
    void release(const std::string& name);
    /// Waits until so many requests have come in.
    void waitForRequests(std::size_t count);
    std::vector<Request> requests() const;
    std::size_t connectionCount() const;

private:
    void accept();
    void serve(boost::asio::ip::tcp::socket& socket);
    bool send(boost::asio::ip::tcp::socket& socket, const Reply& reply);

    const Script script_;
    boost::asio::io_context engine_;
    boost::asio::ip::tcp::acceptor listener_{engine_, {boost::asio::ip::address_v4::loopback(), 0}};
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool isEnding_ = false;
    std::set<std::string> released_;
    std::vector<Request> requests_;
    /// Of the connections that last, each of which has a thread of its own.
    std::list<boost::asio::ip::tcp::socket> sockets_;
    std::size_t connectionCount_ = 0;
    std::thread accepting_;
};

} // namespace teralune
