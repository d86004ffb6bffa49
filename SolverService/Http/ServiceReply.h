#pragma once

#include <boost/json/fwd.hpp>

#include <string>
#include <utility>
#include <vector>

namespace teralune::service {

/// What a route answers, before it becomes bytes.
struct ServiceReply {
    int status = 200;
    std::string contentType = "text/plain; charset=utf-8";
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;

    static ServiceReply text(std::string body, int status = 200);
    static ServiceReply json(const boost::json::value& value, int status = 200);
    /// A refusal that the user is meant to read: {"alert": message}.
    static ServiceReply alert(const std::string& message);
    /// A refusal of the request itself, with the status and a short reason.
    static ServiceReply refusal(int status, std::string reason);
};

} // namespace teralune::service
