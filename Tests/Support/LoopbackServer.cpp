#include "Tests/Support/LoopbackServer.h"

#include "Platform/Foundation/AsciiText.h"

#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>

#include <sstream>

namespace teralune {

namespace asio = boost::asio;
using asio::ip::tcp;

std::string LoopbackServer::Request::target() const {
    const std::size_t begin = head.find(' ') + 1;
    return head.substr(begin, head.find(' ', begin) - begin);
}

std::vector<std::string> LoopbackServer::Request::headers(std::string_view name) const {
    std::vector<std::string> values;
    std::istringstream lines(head);
    for (std::string line; std::getline(lines >> std::ws, line, '\r');) {
        const std::size_t colon = line.find(':');
        if (colon != std::string::npos && equalsIgnoringCase(line.substr(0, colon), name)) {
            values.emplace_back(trimmed(line.substr(colon + 1)));
        }
    }
    return values;
}

std::string LoopbackServer::Request::header(std::string_view name) const {
    const auto values = headers(name);
    return values.empty() ? std::string() : values.front();
}

LoopbackServer::Reply::Reply(int status, std::string_view body, const HttpHeaders& headers) {
    std::string raw = "HTTP/1.1 " + std::to_string(status) + " Text\r\n";
    for (const auto& [name, value] : headers) {
        raw.append(name).append(": ").append(value).append("\r\n");
    }
    raw.append("Content-Length: ").append(std::to_string(body.size())).append("\r\n\r\n").append(body);
    steps_.push_back({std::move(raw), {}});
}

LoopbackServer::Reply&& LoopbackServer::Reply::then(std::string raw) && {
    steps_.push_back({std::move(raw), {}});
    return std::move(*this);
}

LoopbackServer::Reply&& LoopbackServer::Reply::hold(std::string name) && {
    steps_.push_back({{}, std::move(name)});
    return std::move(*this);
}

LoopbackServer::Reply&& LoopbackServer::Reply::hangUp() && {
    hangsUp_ = true;
    return std::move(*this);
}

LoopbackServer::LoopbackServer(Script script)
    : script_(std::move(script))
    , accepting_([this] { accept(); }) {}

LoopbackServer::~LoopbackServer() {
    shutdown(listener_.native_handle(), SHUT_RDWR);
    accepting_.join();
    std::unique_lock lock(mutex_);
    isEnding_ = true;
    for (tcp::socket& socket : sockets_) {
        shutdown(socket.native_handle(), SHUT_RDWR);
    }
    changed_.notify_all();
    changed_.wait(lock, [this] { return sockets_.empty(); });
}

std::string LoopbackServer::host() const {
    return "127.0.0.1:" + std::to_string(listener_.local_endpoint().port());
}

void LoopbackServer::release(const std::string& name) {
    const std::lock_guard lock(mutex_);
    released_.insert(name);
    changed_.notify_all();
}

void LoopbackServer::waitForRequests(std::size_t count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this, count] { return requests_.size() >= count; });
}

std::vector<LoopbackServer::Request> LoopbackServer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::size_t LoopbackServer::connectionCount() const {
    const std::lock_guard lock(mutex_);
    return connectionCount_;
}

void LoopbackServer::accept() {
    tcp::socket accepted(engine_);
    for (boost::system::error_code end; !listener_.accept(accepted, end);) {
        const std::lock_guard lock(mutex_);
        ++connectionCount_;
        std::thread([this, socket = sockets_.insert(sockets_.end(), std::move(accepted))] {
            serve(*socket);
            const std::lock_guard ending(mutex_);
            sockets_.erase(socket);
            changed_.notify_all();
        }).detach();
    }
}

void LoopbackServer::serve(tcp::socket& socket) {
    boost::system::error_code end;
    std::string input;
    while (const std::size_t size = asio::read_until(socket, asio::dynamic_buffer(input), "\r\n\r\n", end)) {
        Request request{input.substr(0, size), {}};
        input.erase(0, size);
        const std::string length = request.header("Content-Length");
        const std::size_t bodySize = length.empty() ? 0 : std::stoul(length);
        const std::size_t missing = bodySize - std::min(bodySize, input.size());
        asio::read(socket, asio::dynamic_buffer(input), asio::transfer_exactly(missing), end);
        if (end) {
            return;
        }
        request.body = input.substr(0, bodySize);
        input.erase(0, bodySize);
        {
            const std::lock_guard lock(mutex_);
            requests_.push_back(request);
            changed_.notify_all();
        }
        if (!send(socket, script_(request))) {
            return;
        }
    }
}

bool LoopbackServer::send(tcp::socket& socket, const Reply& reply) {
    for (const Reply::Step& step : reply.steps_) {
        if (!step.held.empty()) {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [&] { return isEnding_ || released_.contains(step.held); });
        }
        boost::system::error_code end;
        asio::write(socket, asio::buffer(step.bytes), end);
        if (end) {
            return false;
        }
    }
    return !reply.hangsUp_;
}

} // namespace teralune
