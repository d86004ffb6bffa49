#include "Hosts/CommandLine/CommandContext.h"
#include "Hosts/CommandLine/CommandSet.h"
#include "Hosts/CommandLine/PasswordPrompt.h"
#include "Hosts/CommandLine/UserText.h"
#include "Hosts/CommandLine/Validation.h"

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>

namespace teralune {
namespace {

struct Arguments {
    std::string firstName;
    std::string lastName;
    std::string email;
};

constexpr const char* newPasswordVariable = "TERALUNE_NEW_PASSWORD";

/// Waits for the server and says so; a refusal is told in the server's words.
Result<void> finish(const CommandContext& context, const Task<void>& request, std::string_view done) {
    if (Result<void> outcome = context.waitFor(request); !outcome)
        return context.requestFailure(outcome.error());
    context.output.show({{"done", true}}, done);
    return {};
}

Result<void> changeName(const CommandContext& context, const Arguments& arguments) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user;
    return finish(
        context,
        context.application.userAccountModel().updateAccountInfo(arguments.firstName, arguments.lastName),
        "The name has been changed.");
}

Result<void> changeEmail(const CommandContext& context, const Arguments& arguments) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user;
    const bool hasPassword = context.application.persistence().userHasPassword();
    const Result<std::string> password =
        askForPassword(hasPassword ? "Password" : "A password for this account");
    if (!password)
        return password.error();
    // Who signed in elsewhere has no password yet and chooses one, which is sent twice.
    const auto confirmation = hasPassword ? std::nullopt : std::optional(password.value());
    Result<void> changed =
        finish(context,
               context.application.networking().updateEmail(arguments.email, password.value(), confirmation),
               "The e-mail address has been changed.");
    if (changed)
        context.application.userAccountModel().refreshUserInfo();
    return changed;
}

Result<void> changePassword(const CommandContext& context) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user;
    const Result<std::string> current = askForPassword("Current password");
    if (!current)
        return current.error();
    const Result<std::string> next = askForPassword("New password", newPasswordVariable);
    if (!next)
        return next.error();
    return finish(
        context, context.application.networking().changePassword(current.value(), next.value(), next.value()),
        "The password has been changed.");
}

Result<void> resetPassword(const CommandContext& context, const Arguments& arguments) {
    return finish(context, context.application.networking().resetPasswordWith(arguments.email),
                  "A message that lets you choose a new password is on its way.");
}

Result<void> deleteAccount(const CommandContext& context) {
    if (Result<void> user = context.requireSignedIn(); !user)
        return user;
    Result<void> deleted =
        finish(context, context.application.networking().deleteAccount(), "The account has been deleted.");
    if (deleted)
        context.application.userAccountModel().logOut();
    return deleted;
}

} // namespace

void addAccountCommands(CommandSet& commands) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& account = commands.addGroup("account", "Change the account on the server");

    CLI::App& name = commands.add(
        "name", "Change your name",
        [arguments](CommandContext& context) { return changeName(context, *arguments); }, &account);
    name.add_option("FIRST", arguments->firstName, "Your first name")->required();
    name.add_option("LAST", arguments->lastName, "Your last name")->required();

    commands
        .add(
            "email", "Change your e-mail address; asks for the password or takes TERALUNE_PASSWORD",
            [arguments](CommandContext& context) { return changeEmail(context, *arguments); }, &account)
        .add_option("EMAIL", arguments->email, "The new address")
        ->required()
        ->check(notEmpty());
    commands.add(
        "password",
        "Change your password; asks for both or takes TERALUNE_PASSWORD and TERALUNE_NEW_PASSWORD",
        [](CommandContext& context) { return changePassword(context); }, &account);
    commands
        .add(
            "reset", "Ask for a message that lets you choose a new password",
            [arguments](CommandContext& context) { return resetPassword(context, *arguments); }, &account)
        .add_option("EMAIL", arguments->email, "Your address")
        ->required()
        ->check(notEmpty());
    commands.add(
        "delete", "Delete the account and sign out",
        [](CommandContext& context) { return deleteAccount(context); }, &account);
}

} // namespace teralune
