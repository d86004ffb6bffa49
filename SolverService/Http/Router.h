#pragma once

#include "SolverService/Http/ReceivedRequest.h"
#include "SolverService/Http/ServiceReply.h"
#include "SolverService/Model/Caller.h"

#include <functional>
#include <map>
#include <string>

namespace teralune::service {

class Tokens;

/// Who may call a route.
enum class Access {
    /// Anyone; a token is not looked at.
    open,
    /// Anyone without a token or with a valid one.
    anyToken,
    /// A signed-in user with a valid token.
    signedIn,
};

enum class Method { get, post };

/// Finds the route of a request, lets only those callers in who may, and turns whatever a handler throws
/// into status 500. Filled before the first request, then used from any thread.
class Router {
public:
    using Handler = std::function<ServiceReply(const ReceivedRequest&, const Caller&)>;

    explicit Router(Tokens& tokens) : tokens_(tokens) {}

    void get(std::string path, Access access, Handler handler);
    void post(std::string path, Access access, Handler handler);

    ServiceReply route(const ReceivedRequest& request) const;

private:
    struct Route {
        Method method = Method::get;
        Access access = Access::open;
        Handler handler;
    };

    Tokens& tokens_;
    std::map<std::string, Route, std::less<>> routes_;
};

} // namespace teralune::service
