#pragma once

#include "SolverService/Model/NoteRecord.h"
#include "SolverService/SolverService.h"

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace teralune::service {

/// What a client got. Status 0 means that the connection ended without a whole reply.
struct ClientReply {
    int status = 0;
    std::string body;
    std::multimap<std::string, std::string> headers;

    boost::json::value json() const { return boost::json::parse(body); }
    std::string header(const std::string& name) const;
};

using Form = std::vector<std::pair<std::string, std::string>>;

/// A client of one service, with the token that it signed in with.
class ServiceClient {
public:
    explicit ServiceClient(const SolverService& service) : port_(service.port()) {}
    explicit ServiceClient(int port) : port_(port) {}

    ClientReply get(const std::string& target) const;
    ClientReply post(const std::string& target, const Form& form = {}) const;
    ClientReply postBody(const std::string& target, const std::string& body,
                         const std::string& contentType) const;

    /// Keeps the token of a reply that has one.
    void adoptToken(const ClientReply& reply);
    /// Signs in and keeps the token.
    ClientReply logIn(const std::string& email = "demo@teralune.example",
                      const std::string& password = "teralune");

    /// The records of the notebook by their problem.
    std::map<std::string, boost::json::object> notebook() const;

    /// Sent as "tq.token" when not empty.
    std::string token;

private:
    int port_;
};

/// A percent-encoded query value.
std::string encoded(const std::string& text);

/// A started service; a failure to start fails the test that asks for it.
std::unique_ptr<SolverService> startService(SolverService::Options options = {});

/// A service that began with the demo account, and a client of it.
class ServiceTest : public testing::Test {
protected:
    std::unique_ptr<SolverService> service = startService();
    ServiceClient client{*service};
};

/// Sends the bytes as they are and reads until the service closes.
std::string rawExchange(const SolverService& service, const std::string& bytes);

} // namespace teralune::service
