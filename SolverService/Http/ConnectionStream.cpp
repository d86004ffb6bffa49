#include "SolverService/Http/ConnectionStream.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace teralune::service {

namespace {

constexpr std::size_t receiveSize = 16UL * 1024;

} // namespace

ConnectionStream::ConnectionStream(int socket, std::size_t requestLimit)
    : socket_(socket)
    , requestLimit_(requestLimit) {}

bool ConnectionStream::waitForRequest() {
    received_.clear();
    if (consumed_ < buffer_.size()) {
        return true;
    }
    pollfd waiting{socket_, POLLIN, 0};
    int ready = 0;
    do {
        ready = poll(&waiting, 1, idleSeconds * 1000);
    } while (ready < 0 && errno == EINTR);
    return ready > 0 && fill();
}

bool ConnectionStream::fill() {
    buffer_.resize(receiveSize);
    consumed_ = 0;
    ssize_t count = 0;
    do {
        count = recv(socket_, buffer_.data(), buffer_.size(), 0);
    } while (count < 0 && errno == EINTR);
    buffer_.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
}

ssize_t ConnectionStream::read(char* bytes, std::size_t size) {
    // Whatever waits to be sent, an interim reply above all, must be out before the peer is waited for.
    if (!flush(pending_.size())) {
        return -1;
    }
    if (consumed_ == buffer_.size() && !fill()) {
        return -1;
    }
    const std::size_t allowed = requestLimit_ - std::min(requestLimit_, received_.size());
    const std::size_t count = std::min({size, buffer_.size() - consumed_, allowed});
    if (count == 0) {
        return -1;
    }
    std::copy_n(buffer_.data() + consumed_, count, bytes);
    received_.append(bytes, count);
    consumed_ += count;
    return static_cast<ssize_t>(count);
}

bool ConnectionStream::flush(std::size_t size) {
    std::size_t sent = 0;
    while (sent < size) {
        const ssize_t count = send(socket_, pending_.data() + sent, size - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            pending_.clear();
            return false;
        }
        sent += static_cast<std::size_t>(count);
    }
    pending_.clear();
    return true;
}

} // namespace teralune::service
