#include "SolverService/Http/HttpConnection.h"

#include "SolverService/Http/ConnectionStream.h"

#include <algorithm>
#include <exception>
#include <httplib.h>
#include <limits>

namespace teralune::service {

namespace {

constexpr std::size_t headLimit = 64UL * 1024;

std::vector<std::pair<std::string, std::string>> headersOf(std::string_view head) {
    std::vector<std::pair<std::string, std::string>> headers;
    head.remove_prefix(std::min(head.size(), head.find("\r\n")));
    while (head.size() > 2) {
        head.remove_prefix(2);
        const std::string_view line = head.substr(0, head.find("\r\n"));
        head.remove_prefix(line.size());
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        std::string_view value = line.substr(colon + 1);
        value.remove_prefix(std::min(value.size(), value.find_first_not_of(" \t")));
        value = value.substr(0, value.find_last_not_of(" \t") + 1);
        headers.emplace_back(line.substr(0, colon), value);
    }
    return headers;
}

/// The connection's bytes in the shape in which the engine wants them.
class EngineStream final : public httplib::Stream {
public:
    explicit EngineStream(ConnectionStream& connection) : connection_(connection) {}

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    ssize_t read(char* bytes, std::size_t size) override { return connection_.read(bytes, size); }
    ssize_t write(const char* bytes, std::size_t size) override {
        connection_.write(bytes, size);
        return static_cast<ssize_t>(size);
    }
    void get_remote_ip_and_port(std::string& ip, int& port) const override {
        ip = "127.0.0.1";
        port = 0;
    }
    void get_local_ip_and_port(std::string& ip, int& port) const override {
        ip = "127.0.0.1";
        port = 0;
    }
    /// The engine only compares the number with the limit of select(), which is never called here.
    socket_t socket() const override { return 0; }

private:
    ConnectionStream& connection_;
};

/// The engine parses requests and writes replies; what comes in and what goes out, and when the
/// connection ends, is decided here.
class Connection final : private httplib::Server {
public:
    Connection(int socket, std::size_t bodyLimit, const Exchange& exchange)
        : stream_(socket, headLimit + bodyLimit)
        , exchange_(exchange) {
        set_payload_max_length(bodyLimit);
        // Only said to the client; the connection itself is kept as long as serve() likes.
        set_keep_alive_timeout(ConnectionStream::idleSeconds);
        set_keep_alive_max_count(std::numeric_limits<std::int32_t>::max());
        const Handler withoutBody = [this](const httplib::Request& request, httplib::Response& response) {
            answer(request, std::string(), response);
        };
        const HandlerWithContentReader withBody =
            [this](const httplib::Request& request, httplib::Response& response,
                   const httplib::ContentReader& reader) { readAndAnswer(request, response, reader); };
        Get(".*", withoutBody);
        Options(".*", withoutBody);
        Post(".*", withBody);
        Put(".*", withBody);
        Patch(".*", withBody);
        Delete(".*", withBody);
    }

    void serve() {
        while (stream_.waitForRequest()) {
            bool closed = false;
            ending_ = Ending::complete;
            EngineStream engineStream(stream_);
            const bool served = process_request(engineStream, false, closed,
                                                [this](httplib::Request& request) { prepare(request); });
            if (!send() || !served || closed || lastRequest_ || ending_ != Ending::complete) {
                return;
            }
        }
    }

private:
    void prepare(httplib::Request& request) {
        // The engine would choose brotli at its slowest level; a long list would take seconds.
        if (request.get_header_value("Accept-Encoding").find("gzip") != std::string::npos) {
            request.headers.erase("Accept-Encoding");
            request.headers.emplace("Accept-Encoding", "gzip");
        } else {
            request.headers.erase("Accept-Encoding");
        }
        // The engine leaves the body of such a request in the stream, where it would be taken for the
        // next request.
        const bool bodyIsRead = request.method == "POST" || request.method == "PUT" ||
                                request.method == "PATCH" || request.method == "DELETE";
        lastRequest_ =
            !bodyIsRead &&
            (request.has_header("Transfer-Encoding") ||
             (request.has_header("Content-Length") && request.get_header_value("Content-Length") != "0"));
    }

    void readAndAnswer(const httplib::Request& request, httplib::Response& response,
                       const httplib::ContentReader& reader) {
        std::string body;
        bool complete = false;
        if (request.is_multipart_form_data()) {
            complete = reader([](const httplib::MultipartFormData&) { return true; },
                              [](const char*, std::size_t) { return true; });
            const std::string& received = stream_.received();
            body = received.substr(std::min(received.size(), received.find("\r\n\r\n") + 4));
        } else {
            complete = reader([&body](const char* bytes, std::size_t size) {
                body.append(bytes, size);
                return true;
            });
        }
        if (!complete) {
            response.status = response.status >= 400 ? response.status : 400;
            lastRequest_ = true;
            return;
        }
        answer(request, std::move(body), response);
    }

    void answer(const httplib::Request& request, std::string body, httplib::Response& response) {
        ReceivedRequest received;
        received.method = request.method;
        received.target = request.target;
        received.headers = headersOf(std::string_view(stream_.received()).substr(0, headSize()));
        received.body = std::move(body);
        received.readParameters();

        const Answer answer = exchange_(received);
        ending_ = answer.ending;
        response.status = answer.reply.status;
        for (const auto& [name, value] : answer.reply.headers) {
            response.headers.emplace(name, value);
        }
        response.set_content(answer.reply.body, answer.reply.contentType);
    }

    std::size_t headSize() const {
        const std::size_t end = stream_.received().find("\r\n\r\n");
        return end == std::string::npos ? stream_.received().size() : end;
    }

    bool send() {
        const std::string& reply = stream_.pendingReply();
        switch (ending_) {
        case Ending::complete:
            return stream_.flush(reply.size());
        case Ending::hungUp:
            return stream_.flush(0);
        case Ending::cutInBody: {
            const std::size_t head = std::min(reply.size(), reply.find("\r\n\r\n") + 4);
            return stream_.flush(head + (reply.size() - head) / 2);
        }
        }
        return false;
    }

    ConnectionStream stream_;
    const Exchange& exchange_;
    Ending ending_ = Ending::complete;
    bool lastRequest_ = false;
};

} // namespace

void serveConnection(int socket, std::size_t bodyLimit, const Exchange& exchange) noexcept {
    try {
        Connection(socket, bodyLimit, exchange).serve();
    } catch (const std::exception&) {
        // Out of memory or threads: the peer sees its connection closed, every other one goes on.
        return;
    }
}

} // namespace teralune::service
