#include "Hosts/CommandLine/CommandContext.h"
#include "Hosts/CommandLine/CommandSet.h"
#include "Hosts/CommandLine/PasswordPrompt.h"
#include "Hosts/CommandLine/UserText.h"

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>

namespace teralune {
namespace {

struct Entrant {
    std::string email;
    std::string firstName;
    std::string lastName;
};

/// One account at a time: the notes in the store belong to whoever is signed in.
Result<void> requireSignedOut(const CommandContext& context) {
    if (!context.application.userAccountModel().isLoggedIn())
        return {};
    return commandError("Somebody is signed in already; sign out first.");
}

void showUser(const CommandContext& context) {
    const SettingsPersistenceType& user = context.application.persistence();
    context.output.show(userRecord(user), "Signed in as " + userText(user));
}

/// What every kind of sign-in does with its reply.
Result<void> enter(const CommandContext& context, const SignInReply& reply) {
    if (!reply)
        return commandError(context.text("SIGN_IN_FAIL_CONNECTION"));
    if (const auto alert = reply->find("alert"); alert != reply->end())
        return commandError(alert->second);
    boost::json::object response;
    for (const auto& [key, value] : *reply)
        response[key] = value;

    UserAccountModelType& model = context.application.userAccountModel();
    model.consume(boost::json::value(std::move(response)));
    if (!model.isLoggedIn())
        return commandError(context.text("SIGN_IN_FAIL_CONNECTION"));
    context.application.persistence().setLoginType(LoginType::email);
    // The profile is on its way.
    context.application.settle();
    showUser(context);
    return {};
}

Result<void> signUp(const CommandContext& context, const Entrant& entrant) {
    if (Result<void> free = requireSignedOut(context); !free)
        return free;
    const Result<std::string> password = askForPassword("Password for the new account");
    if (!password)
        return password.error();
    return enter(context, context.waitFor<SignInReply>([&](auto done) {
        context.application.networking().signupWith(entrant.email, entrant.firstName, entrant.lastName,
                                                    password.value(), std::move(done));
    }));
}

Result<void> signIn(const CommandContext& context, const Entrant& entrant) {
    if (Result<void> free = requireSignedOut(context); !free)
        return free;
    const Result<std::string> password = askForPassword("Password of " + entrant.email);
    if (!password)
        return password.error();
    return enter(context, context.waitFor<SignInReply>([&](auto done) {
        context.application.networking().logInWith(entrant.email, password.value(), std::move(done));
    }));
}

Result<void> signOut(const CommandContext& context) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user;
    context.application.userAccountModel().logOut();
    context.output.show({{"signedIn", false}}, "Signed out.");
    return {};
}

Result<void> whoAmI(const CommandContext& context) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user;
    showUser(context);
    return {};
}

} // namespace

void addSessionCommands(CommandSet& commands) {
    const auto entrant = std::make_shared<Entrant>();
    CLI::App& signingUp = commands.add(
        "sign-up", "Create an account and sign in; asks for the password or takes TERALUNE_PASSWORD",
        [entrant](CommandContext& context) { return signUp(context, *entrant); });
    signingUp.add_option("EMAIL", entrant->email, "The e-mail address")->required();
    signingUp.add_option("--first-name", entrant->firstName, "Your first name");
    signingUp.add_option("--last-name", entrant->lastName, "Your last name");

    CLI::App& signingIn =
        commands.add("sign-in", "Sign in; asks for the password or takes TERALUNE_PASSWORD",
                     [entrant](CommandContext& context) { return signIn(context, *entrant); });
    signingIn.add_option("EMAIL", entrant->email, "The e-mail address")->required();

    commands.add("sign-out", "Sign out; the local notebook is emptied",
                 [](CommandContext& context) { return signOut(context); });
    commands.add("whoami", "Show who is signed in", [](CommandContext& context) { return whoAmI(context); });
}

} // namespace teralune
