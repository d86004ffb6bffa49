#include "Benchmarks/KeepAliveServer.h"

#include "Platform/Foundation/FatalError.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <string_view>

namespace teralune::benchmarks {

namespace {

std::string replyBytes() {
    constexpr std::size_t bodySize = 256;
    std::string body = "{\"value\":\"";
    body.append(bodySize - body.size() - 2, 'x').append("\"}");
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 256\r\n\r\n" + body;
}

class Loop {
public:
    explicit Loop(int listener) : listener_(listener), epoll_(epoll_create1(0)) { watch(listener); }

    [[noreturn]] void run() {
        while (true) {
            epoll_event events[64];
            const int count = epoll_wait(epoll_, events, std::size(events), -1);
            for (int index = 0; index < count; ++index) {
                const int ready = events[index].data.fd;
                ready == listener_ ? accept() : serve(ready);
            }
        }
    }

private:
    void watch(int socket) {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = socket;
        epoll_ctl(epoll_, EPOLL_CTL_ADD, socket, &event);
    }

    void accept() {
        const int socket = ::accept(listener_, nullptr, nullptr);
        const int yes = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        watch(socket);
    }

    void serve(int socket) {
        char bytes[4096];
        const ssize_t count = read(socket, bytes, sizeof bytes);
        if (count <= 0) {
            unread_.erase(socket);
            close(socket);
            return;
        }
        std::string& unread = unread_[socket].append(bytes, static_cast<std::size_t>(count));
        constexpr std::string_view end = "\r\n\r\n";
        for (std::size_t found = 0; (found = unread.find(end)) != std::string::npos;) {
            unread.erase(0, found + end.size());
            if (send(socket, reply_.data(), reply_.size(), MSG_NOSIGNAL) < 0) {
                return;
            }
        }
    }

    const int listener_;
    const int epoll_;
    const std::string reply_ = replyBytes();
    std::map<int, std::string> unread_;
};

} // namespace

KeepAliveServer::KeepAliveServer() {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, general, size) != 0 || listen(listener, SOMAXCONN) != 0 ||
        getsockname(listener, general, &size) != 0 || (process_ = fork()) < 0) {
        fatalError("The benchmark's server could not be started.");
    }
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        Loop(listener).run();
    }
    close(listener);
    url_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
}

KeepAliveServer::~KeepAliveServer() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

} // namespace teralune::benchmarks
