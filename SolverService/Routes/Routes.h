#pragma once

#include "SolverService/Http/ReceivedRequest.h"
#include "SolverService/Http/ServiceReply.h"
#include "SolverService/Model/Caller.h"

#include <string>

namespace teralune::service {

class Accounts;
class IdentityProvider;
class Notebook;
class Router;
class SharedLists;
class Suggestions;
class Tokens;
class UsageRecords;

/// The paths of the service, one file per family: what each expects, and what it answers. Stateless but
/// for the model that it speaks to, so requests may be handled on several threads at once.
class Routes {
public:
    struct Model {
        Accounts& accounts;
        Tokens& tokens;
        Notebook& notebook;
        SharedLists& lists;
        UsageRecords& usage;
        Suggestions& suggestions;
        IdentityProvider& identity;
    };

    explicit Routes(Model model) : model_(model) {}

    /// Enters every path. The routes must outlive the router's last request.
    void enter(Router& router);

private:
    void enterSession(Router& router);
    void enterAccount(Router& router);
    void enterNotebook(Router& router);
    void enterSolver(Router& router);
    void enterIdentity(Router& router);
    void enterCamera(Router& router);
    void enterLogs(Router& router);

    /// The reply that signs a client in: {"connected": …, "jwt": …}.
    ServiceReply signedIn(std::int64_t account);
    ServiceReply signUp(const ReceivedRequest& request);
    ServiceReply logIn(const ReceivedRequest& request);
    ServiceReply refresh(const ReceivedRequest& request);
    ServiceReply logOut(const ReceivedRequest& request);

    ServiceReply userInfo(std::int64_t account);
    ServiceReply updateUserField(const ReceivedRequest& request, std::int64_t account);

    ServiceReply disableAccount(const Caller& caller);
    ServiceReply updateEmail(const ReceivedRequest& request, std::int64_t account);
    ServiceReply changePassword(const ReceivedRequest& request, const Caller& caller);
    ServiceReply dismissNotification(const ReceivedRequest& request, std::int64_t account);
    ServiceReply resetRequest(const ReceivedRequest& request);

    ServiceReply authorize(const ReceivedRequest& request);
    ServiceReply facebookAuth(const ReceivedRequest& request);
    ServiceReply microsoftAuth(const ReceivedRequest& request);

    ServiceReply addNote(const ReceivedRequest& request, std::int64_t account);
    ServiceReply saveGraph(const ReceivedRequest& request, std::int64_t account);
    ServiceReply updateNoteFavorite(const ReceivedRequest& request, std::int64_t account);
    ServiceReply setNoteTags(const ReceivedRequest& request, std::int64_t account);
    ServiceReply getList(const ReceivedRequest& request);
    ServiceReply saveList(const ReceivedRequest& request, std::int64_t account);

    ServiceReply steps(const ReceivedRequest& request);
    ServiceReply suggest(const ReceivedRequest& request);

    Model model_;
};

} // namespace teralune::service
