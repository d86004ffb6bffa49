#include "Benchmarks/KeepAliveServer.h"

#include "Platform/Foundation/FatalError.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <map>
#include <new>
#include <string_view>

namespace teralune::benchmarks {

namespace {

using Counts = KeepAliveServer::Counts;

std::string reply(std::string_view status, std::string_view body) {
    return std::string("HTTP/1.1 ")
        .append(status)
        .append("\r\nContent-Type: application/json\r\nContent-Length: ")
        .append(std::to_string(body.size()))
        .append("\r\n\r\n")
        .append(body);
}

std::string jsonOf256Bytes() {
    std::string body = "{\"value\":\"";
    return body.append(256 - body.size() - 2, 'x').append("\"}");
}

class Loop {
public:
    Loop(int listener, Counts& counts) : counts_(counts), listener_(listener), epoll_(epoll_create1(0)) {
        watch(listener);
    }

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
        counts_.mostConnections = std::max(++counts_.openConnections, counts_.mostConnections.load());
    }

    void serve(int socket) {
        char bytes[4096];
        const ssize_t count = read(socket, bytes, sizeof bytes);
        if (count <= 0) {
            unread_.erase(socket);
            --counts_.openConnections;
            close(socket);
            return;
        }
        std::string& unread = unread_[socket].append(bytes, static_cast<std::size_t>(count));
        constexpr std::string_view end = "\r\n\r\n";
        for (std::size_t found = 0; (found = unread.find(end)) != std::string::npos;) {
            const std::string& answer = answerTo(std::string_view(unread).substr(0, found));
            unread.erase(0, found + end.size());
            if (send(socket, answer.data(), answer.size(), MSG_NOSIGNAL) < 0) {
                return;
            }
        }
    }

    const std::string& answerTo(std::string_view head) {
        if (head.starts_with("POST /refresh ")) {
            ++counts_.refreshes;
            return refreshed_;
        }
        const bool isRefused = head.find(stale_) != std::string_view::npos;
        constexpr std::string_view get = "GET /";
        std::size_t number = KeepAliveServer::numbers;
        std::from_chars(head.data() + get.size(), head.data() + head.size(), number);
        if (number < KeepAliveServer::numbers) {
            ++(isRefused ? counts_.refused : counts_.served)[number];
        }
        return isRefused ? refused_ : served_;
    }

    Counts& counts_;
    const int listener_;
    const int epoll_;
    const std::string stale_ = std::string("tq.token=") + KeepAliveServer::staleToken;
    const std::string served_ = reply("200 OK", jsonOf256Bytes());
    const std::string refused_ = reply("403 Forbidden", "{}");
    const std::string refreshed_ = reply("200 OK", R"({"jwt":"fresh"})");
    std::map<int, std::string> unread_;
};

Counts* sharedCounts() {
    void* const memory =
        mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        fatalError("The benchmark's server found no memory.");
    }
    return new (memory) Counts();
}

} // namespace

void KeepAliveServer::Counts::reset() {
    refreshes = 0;
    mostConnections = openConnections.load();
    std::fill(served.begin(), served.end(), 0);
    std::fill(refused.begin(), refused.end(), 0);
}

KeepAliveServer::KeepAliveServer() : counts_(sharedCounts()) {
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
        Loop(listener, *counts_).run();
    }
    close(listener);
    host_ = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}

KeepAliveServer::~KeepAliveServer() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    munmap(counts_, sizeof(Counts));
}

} // namespace teralune::benchmarks
