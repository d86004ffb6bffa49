#include "SolverService/Http/ServiceReply.h"

#include <boost/json.hpp>

namespace teralune::service {

ServiceReply ServiceReply::text(std::string body, int status) {
    ServiceReply reply;
    reply.status = status;
    reply.body = std::move(body);
    return reply;
}

ServiceReply ServiceReply::json(const boost::json::value& value, int status) {
    ServiceReply reply;
    reply.status = status;
    reply.contentType = "application/json";
    reply.body = boost::json::serialize(value);
    return reply;
}

ServiceReply ServiceReply::alert(const std::string& message) {
    return json({{"alert", message}});
}

ServiceReply ServiceReply::refusal(int status, std::string reason) {
    return text(std::move(reason), status);
}

} // namespace teralune::service
