#include "SolverService/Http/Router.h"
#include "SolverService/IdentityProvider.h"
#include "SolverService/Model/Accounts.h"
#include "SolverService/Routes/Routes.h"

#include <boost/json.hpp>

namespace teralune::service {

namespace {

std::optional<std::string> textAt(const boost::json::object& object, std::string_view key) {
    const boost::json::value* value = object.if_contains(boost::json::string_view(key));
    if (value == nullptr || !value->is_string()) {
        return std::nullopt;
    }
    return boost::json::value_to<std::string>(*value);
}

} // namespace

void Routes::enterIdentity(Router& router) {
    router.get("/identity/authorize", Access::open,
               [this](const auto& request, const auto&) { return authorize(request); });
    router.post("/mobileFacebookAuth", Access::open,
                [this](const auto& request, const auto&) { return facebookAuth(request); });
    router.post("/microsoftMobileAuth2", Access::open,
                [this](const auto& request, const auto&) { return microsoftAuth(request); });
}

ServiceReply Routes::authorize(const ReceivedRequest& request) {
    const Result<std::string> location = model_.identity.authorize(request.parameters);
    if (!location) {
        return ServiceReply::refusal(400, location.error().localizedDescription);
    }
    ServiceReply reply = ServiceReply::text(std::string(), 302);
    reply.headers.emplace_back("Location", location.value());
    reply.headers.emplace_back("Cache-Control", "no-store");
    return reply;
}

ServiceReply Routes::facebookAuth(const ReceivedRequest& request) {
    boost::system::error_code problem;
    const boost::json::value profile = boost::json::parse(request.parameters.text("facebookObj"), problem);
    std::optional<Person> person;
    if (!problem && profile.is_object()) {
        const boost::json::object& object = profile.get_object();
        person =
            model_.identity.confirm(textAt(object, "id").value_or(std::string()), textAt(object, "email"));
    }
    if (!person) {
        return ServiceReply::alert("This Facebook account could not be verified.");
    }
    return signedIn(model_.accounts.signInWithIdentity("facebook:" + person->id, person->email,
                                                       person->firstName, person->lastName));
}

ServiceReply Routes::microsoftAuth(const ReceivedRequest& request) {
    const Parameters& form = request.parameters;
    const std::optional<Person> person =
        model_.identity.redeem(form.text("code"), form.text("code_verifier"), form.text("redirectUrl"));
    if (!person) {
        return ServiceReply::alert("This Microsoft account could not be verified.");
    }
    return signedIn(model_.accounts.signInWithIdentity("microsoft:" + person->id, person->email,
                                                       person->firstName, person->lastName));
}

} // namespace teralune::service
