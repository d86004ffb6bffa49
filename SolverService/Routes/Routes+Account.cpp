#include "SolverService/Http/Router.h"
#include "SolverService/Model/Accounts.h"
#include "SolverService/Model/Notebook.h"
#include "SolverService/Model/Tokens.h"
#include "SolverService/Model/UsageRecords.h"
#include "SolverService/Model/UtcText.h"
#include "SolverService/Routes/Routes.h"

#include <boost/json.hpp>

namespace teralune::service {

namespace {

constexpr std::size_t longestNotificationKey = 100;

/// What the sign-in screens and settings screens take for success, or the text for the user.
ServiceReply outcome(const Result<void>& result) {
    return result ? ServiceReply::json(boost::json::object())
                  : ServiceReply::alert(result.error().localizedDescription);
}

} // namespace

void Routes::enterAccount(Router& router) {
    router.post("/api/user/info", Access::signedIn,
                [this](const auto&, const auto& caller) { return userInfo(*caller.account); });
    router.post("/api/user/updateUserField", Access::signedIn,
                [this](const auto& request, const auto& caller) {
                    return updateUserField(request, *caller.account);
                });
    router.post("/api/user/disableAccount", Access::signedIn,
                [this](const auto&, const auto& caller) { return disableAccount(caller); });
    router.post("/api/user/updateEmail", Access::signedIn, [this](const auto& request, const auto& caller) {
        return updateEmail(request, *caller.account);
    });
    router.post("/api/user/changePassword", Access::signedIn,
                [this](const auto& request, const auto& caller) { return changePassword(request, caller); });
    router.post("/api/user/dismissNotification", Access::signedIn,
                [this](const auto& request, const auto& caller) {
                    return dismissNotification(request, *caller.account);
                });
    router.post("/resetRequest", Access::open,
                [this](const auto& request, const auto&) { return resetRequest(request); });
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

ServiceReply Routes::disableAccount(const Caller& caller) {
    model_.notebook.clear(*caller.account);
    model_.accounts.disable(*caller.account);
    // The client still signs out with the session that it has; every other one ends here.
    model_.tokens.endOthers(*caller.account, caller.session);
    return ServiceReply::text("OK");
}

ServiceReply Routes::updateEmail(const ReceivedRequest& request, std::int64_t account) {
    const Parameters& form = request.parameters;
    return outcome(model_.accounts.changeEmail(account, form.text("newEmail"), form.text("password"),
                                               form.text("password2")));
}

ServiceReply Routes::changePassword(const ReceivedRequest& request, const Caller& caller) {
    const Parameters& form = request.parameters;
    const Result<void> changed = model_.accounts.changePassword(
        *caller.account, form.text("currentPassword"), form.text("password"), form.text("password2"));
    if (changed) {
        // Whoever knew the old password is signed out everywhere else.
        model_.tokens.endOthers(*caller.account, caller.session);
    }
    return outcome(changed);
}

ServiceReply Routes::dismissNotification(const ReceivedRequest& request, std::int64_t account) {
    const std::string key = request.parameters.text("notificationKey");
    if (key.empty() || key.size() > longestNotificationKey) {
        return ServiceReply::refusal(400, "notificationKey is missing");
    }
    model_.accounts.dismiss(account, key);
    return ServiceReply::text("OK");
}

ServiceReply Routes::resetRequest(const ReceivedRequest& request) {
    if (!model_.accounts.idOf(request.parameters.text("email"))) {
        return ServiceReply::alert("There is no account with this email address.");
    }
    model_.usage.add(request.path(), request.parameters);
    return ServiceReply::json(boost::json::object());
}

} // namespace teralune::service
