#include "SolverService/Http/Router.h"
#include "SolverService/Model/Accounts.h"
#include "SolverService/Model/Tokens.h"
#include "SolverService/Routes/Routes.h"

#include <boost/json.hpp>

namespace teralune::service {

void Routes::enterSession(Router& router) {
    router.post("/mobileSignup", Access::open,
                [this](const auto& request, const auto&) { return signUp(request); });
    router.post("/mobileLogin", Access::open,
                [this](const auto& request, const auto&) { return logIn(request); });
    router.post("/refresh", Access::open,
                [this](const auto& request, const auto&) { return refresh(request); });
    router.post("/api/mobile/token", Access::open, [this](const auto&, const auto&) {
        return ServiceReply::json({{"jwt", model_.tokens.begin(std::nullopt)}});
    });
    router.get("/logout", Access::open, [this](const auto& request, const auto&) { return logOut(request); });
}

ServiceReply Routes::signedIn(std::int64_t account) {
    const std::string token = model_.tokens.begin(account);
    return ServiceReply::json({{"connected", model_.accounts.account(account).connected}, {"jwt", token}});
}

ServiceReply Routes::signUp(const ReceivedRequest& request) {
    const Parameters& form = request.parameters;
    const Result<std::int64_t> account = model_.accounts.signUp(form.text("email"), form.text("firstName"),
                                                                form.text("lastName"), form.text("password"));
    return account ? signedIn(account.value()) : ServiceReply::alert(account.error().localizedDescription);
}

ServiceReply Routes::logIn(const ReceivedRequest& request) {
    const Parameters& form = request.parameters;
    const Result<std::int64_t> account = model_.accounts.signIn(form.text("email"), form.text("password"));
    return account ? signedIn(account.value()) : ServiceReply::alert(account.error().localizedDescription);
}

ServiceReply Routes::refresh(const ReceivedRequest& request) {
    // A stale token is what a refresh is for, so the router's check does not apply here.
    const Caller caller = model_.tokens.look(request.cookie("tq.token"));
    if (!caller.session || !caller.account) {
        return ServiceReply::refusal(403, "Forbidden");
    }
    return ServiceReply::json({{"jwt", model_.tokens.issue(*caller.session)}});
}

ServiceReply Routes::logOut(const ReceivedRequest& request) {
    // Nobody should have to refresh a token in order to give it up.
    const Caller caller = model_.tokens.look(request.cookie("tq.token"));
    if (!caller.session) {
        return ServiceReply::refusal(403, "Forbidden");
    }
    model_.tokens.end(*caller.session);
    return ServiceReply::text("OK");
}

} // namespace teralune::service
