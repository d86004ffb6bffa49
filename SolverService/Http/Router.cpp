#include "SolverService/Http/Router.h"

#include "SolverService/Model/Tokens.h"

#include <exception>

namespace teralune::service {

namespace {

bool mayPass(Access access, const Caller& caller) {
    switch (access) {
    case Access::open:
        return true;
    case Access::anyToken:
        return caller.token == TokenState::absent || caller.token == TokenState::valid;
    case Access::signedIn:
        return caller.token == TokenState::valid && caller.account.has_value();
    }
    return false;
}

} // namespace

void Router::get(std::string path, Access access, Handler handler) {
    routes_[std::move(path)] = Route{Method::get, access, std::move(handler)};
}

void Router::post(std::string path, Access access, Handler handler) {
    routes_[std::move(path)] = Route{Method::post, access, std::move(handler)};
}

ServiceReply Router::route(const ReceivedRequest& request) const {
    const auto found = routes_.find(request.path());
    if (found == routes_.end()) {
        return ServiceReply::refusal(404, "Not found");
    }
    const Route& route = found->second;
    const bool sameMethod = route.method == Method::post
                                ? request.method == "POST"
                                : request.method == "GET" || request.method == "HEAD";
    if (!sameMethod) {
        ServiceReply reply = ServiceReply::refusal(405, "Method not allowed");
        reply.headers.emplace_back("Allow", route.method == Method::post ? "POST" : "GET, HEAD");
        return reply;
    }
    if (!request.parameters.areText()) {
        return ServiceReply::refusal(400, "The parameters are not UTF-8");
    }
    try {
        Caller caller;
        if (route.access != Access::open) {
            caller = tokens_.use(request.cookie("tq.token"));
        }
        if (!mayPass(route.access, caller)) {
            return ServiceReply::refusal(403, "Forbidden");
        }
        return route.handler(request, caller);
    } catch (const std::exception&) {
        return ServiceReply::refusal(500, "Internal server error");
    }
}

} // namespace teralune::service
