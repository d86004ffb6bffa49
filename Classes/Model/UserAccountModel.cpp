#include "Classes/Model/UserAccountModel.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/NetworkingType.h"
#include "Classes/Interfaces/NotebookSynchronizationJobType.h"
#include "Classes/Interfaces/SettingsPersistenceType.h"
#include "Classes/Model/CoreData/DataController.h"
#include "Classes/Networking/CookieValue.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Http/HttpError.h"

#include <algorithm>

namespace teralune {

std::string UserAccountModel::connectedID() const {
    return application_.persistence().connectedID().value_or("");
}

bool UserAccountModel::isLoggedIn() const {
    return !connectedID().empty();
}

void UserAccountModel::consume(const std::optional<boost::json::value>& loginOrSignupResponseObject) {
    if (!loginOrSignupResponseObject || !loginOrSignupResponseObject->is_object())
        return;
    const boost::json::object& reply = loginOrSignupResponseObject->get_object();
    if (!std::all_of(reply.begin(), reply.end(),
                     [](const auto& member) { return member.value().is_string(); }))
        return;
    const boost::json::value* connectedID = reply.if_contains(CONNECTED_ID_RESPONSE_KEY);
    const boost::json::value* accessToken = reply.if_contains(ACCESS_TOKEN_RESPONSE_KEY);
    if (!connectedID || !accessToken || !canBeCookieValue(accessToken->get_string()))
        return;

    // The token first: who sees the id must find the token that goes with it.
    SettingsPersistenceType& persistence = application_.persistence();
    persistence.setAccessToken(std::string(accessToken->get_string()));
    persistence.setConnectedID(std::string(connectedID->get_string()));
    refreshUserInfo();
}

void UserAccountModel::refreshUserInfo() {
    if (!isLoggedIn())
        return;
    application_.networking().getUserData(
        [this, lifetime = lifetime_.watch(), asker = connectedID()](const std::optional<UserData>& user) {
            // The profile of somebody who has signed out meanwhile is not kept.
            if (!lifetime.isOver() && user && connectedID() == asker)
                handleUserInfo(*user);
        });
}

Task<void> UserAccountModel::updateAccountInfo(const std::string& firstName, const std::string& lastName) {
    const auto mainQueue = application_.platform().mainQueue;
    // The application outlives every request, so the chain may hold it.
    IApplication& application = application_;
    NetworkingType& networking = application.networking();
    // Whoever signed in meanwhile must not get another one's name.
    const auto isSameUser = [&application, asker = connectedID()] {
        return application.persistence().connectedID().value_or("") == asker;
    };
    const auto cancelled = [] {
        return Task<void>::forResult(httpTransportError(HttpTransportError::cancelled));
    };
    return networking.updateUserField(UserField::firstName, firstName)
        .onSuccess(
            mainQueue,
            [&application, isSameUser, cancelled, client = networking.lifetime(), firstName, lastName] {
                if (!isSameUser())
                    return cancelled();
                application.persistence().setFirstName(firstName);
                // A host that ends may run the main queue once more when the client is gone.
                if (client.isOver())
                    return cancelled();
                return application.networking().updateUserField(UserField::lastName, lastName);
            })
        .onSuccess(mainQueue, [&application, isSameUser, cancelled, lastName] {
            if (!isSameUser())
                return cancelled();
            application.persistence().setLastName(lastName);
            return Task<void>::forResult({});
        });
}

void UserAccountModel::logOut() {
    prepareLogout();
    application_.networking().logOut();
}

void UserAccountModel::logoutUserAndPromptForLogin() {
    prepareLogout();
    application_.userWasLoggedOut();
}

void UserAccountModel::handleUserInfo(const UserData& user) {
    SettingsPersistenceType& persistence = application_.persistence();
    persistence.setFirstName(user.firstName);
    persistence.setLastName(user.lastName);
    persistence.setUserEmail(user.email);
    persistence.setRegistrationDate(user.registrationDate);
    persistence.setUserHasPassword(user.hasPassword);
    application_.platform().notificationCenter->post({std::string(UserAccountInfoUpdated), {}, {}});
}

void UserAccountModel::prepareLogout() {
    application_.notebookSynchronizationJob().stopJob();
    application_.persistence().logout();
    application_.dataController().logout();
}

} // namespace teralune
