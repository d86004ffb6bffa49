#include "SolverService/Http/Router.h"
#include "SolverService/Model/Accounts.h"
#include "SolverService/Model/UtcText.h"
#include "SolverService/Routes/Routes.h"

#include <boost/json.hpp>

namespace teralune::service {

void Routes::enterAccount(Router& router) {
    router.post("/api/user/info", Access::signedIn,
                [this](const auto&, const auto& caller) { return userInfo(*caller.account); });
    router.post("/api/user/updateUserField", Access::signedIn,
                [this](const auto& request, const auto& caller) {
                    return updateUserField(request, *caller.account);
                });
}

ServiceReply Routes::userInfo(std::int64_t account) {
    const Account user = model_.accounts.account(account);
    boost::json::object record{
        {"firstName", user.firstName},
        {"lastName", user.lastName},
        {"registrationDate", registrationTime(user.registered)},
        {"dismissedNotifications", boost::json::value_from(user.dismissedNotifications)},
        {"settings", {{"numDecimalDisplay", user.numDecimalDisplay}, {"steps", user.steps}}},
        {"hasPassword", user.hasPassword},
    };
    if (user.email) {
        record["email"] = *user.email;
    }
    return ServiceReply::json(record);
}

ServiceReply Routes::updateUserField(const ReceivedRequest& request, std::int64_t account) {
    const Parameters& form = request.parameters;
    const Result<void> changed = model_.accounts.setField(account, form.text("field"), form.text("value"));
    if (!changed) {
        return ServiceReply::json({{"success", false}, {"message", changed.error().localizedDescription}});
    }
    return ServiceReply::json({{"success", true}});
}

} // namespace teralune::service
