#include "Tests/SolverService/ServiceClient.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <stdexcept>

namespace teralune::service {

namespace {

httplib::Headers headersFor(const std::string& token) {
    httplib::Headers headers;
    if (!token.empty()) {
        headers.emplace("Cookie", "tq.platform=iOS;tq.token=" + token);
    }
    return headers;
}

ClientReply replyOf(const httplib::Result& result) {
    if (!result) {
        return {};
    }
    return ClientReply{result->status, result->body, {result->headers.begin(), result->headers.end()}};
}

} // namespace

std::string ClientReply::header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? std::string() : found->second;
}

ClientReply ServiceClient::get(const std::string& target) const {
    return replyOf(httplib::Client("127.0.0.1", port_).Get(target, headersFor(token)));
}

ClientReply ServiceClient::post(const std::string& target, const Form& form) const {
    httplib::Params items;
    for (const auto& [name, value] : form) {
        items.emplace(name, value);
    }
    return replyOf(httplib::Client("127.0.0.1", port_).Post(target, headersFor(token), items));
}

ClientReply ServiceClient::postBody(const std::string& target, const std::string& body,
                                    const std::string& contentType) const {
    return replyOf(httplib::Client("127.0.0.1", port_).Post(target, headersFor(token), body, contentType));
}

void ServiceClient::adoptToken(const ClientReply& reply) {
    const boost::json::value answer = reply.json();
    if (const auto* jwt = answer.as_object().if_contains("jwt")) {
        token = boost::json::value_to<std::string>(*jwt);
    }
}

ClientReply ServiceClient::logIn(const std::string& email, const std::string& password) {
    ClientReply reply = post("/mobileLogin", {{"lang", "en"}, {"email", email}, {"password", password}});
    adoptToken(reply);
    return reply;
}

std::map<std::string, boost::json::object> ServiceClient::notebook() const {
    std::map<std::string, boost::json::object> records;
    const boost::json::value list = get("/api/notebookEntriesForMobileAll").json();
    for (const boost::json::value& record : list.as_array()) {
        records[boost::json::value_to<std::string>(record.at("problem"))] = record.as_object();
    }
    return records;
}

std::string encoded(const std::string& text) {
    return httplib::detail::encode_query_param(text);
}

std::unique_ptr<SolverService> startService(SolverService::Options options) {
    auto service = SolverService::start(std::move(options));
    if (!service) {
        throw std::runtime_error(service.error().localizedDescription);
    }
    return std::move(service).value();
}

std::string rawExchange(const SolverService& service, const std::string& bytes) {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(service.port());
    std::string received;
    if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        shutdown(socket, SHUT_WR);
        std::array<char, 4096> buffer{};
        ssize_t count = 0;
        while ((count = recv(socket, buffer.data(), buffer.size(), 0)) > 0) {
            received.append(buffer.data(), static_cast<std::size_t>(count));
        }
    }
    close(socket);
    return received;
}

} // namespace teralune::service
