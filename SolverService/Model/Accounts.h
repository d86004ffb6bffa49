#pragma once

#include "Platform/Foundation/Result.h"
#include "SolverService/Model/Account.h"
#include "SolverService/Model/ServerModel.h"

#include <string>

namespace teralune::service {

/// The users: who may sign in, and their profile. A refusal's localizedDescription is the text for the
/// user. Passwords are kept as salted digests only. Used from any thread.
class Accounts {
public:
    explicit Accounts(ServerModel& model) : model_(model) {}

    /// Makes an account that signs in by e-mail address and password; its id.
    Result<std::int64_t> signUp(const std::string& email, const std::string& firstName,
                                const std::string& lastName, const std::string& password);
    /// The id of the account with that address and password. The refusal never tells which was wrong.
    Result<std::int64_t> signIn(const std::string& email, const std::string& password);

    std::optional<std::int64_t> idOf(const std::string& email);
    /// An account that exists; its id came from a session.
    Account account(std::int64_t id);

    /// Changes one field, named by its path in the user record.
    Result<void> setField(std::int64_t id, const std::string& path, const std::string& value);
    /// Remembers that the user does not want to see a notice again.
    void dismiss(std::int64_t id, const std::string& notification);

    /// The account of someone whom an identity provider vouches for: the one that signed in so before, or
    /// the one with that e-mail address, or a new one.
    std::int64_t signInWithIdentity(const std::string& identity, const std::optional<std::string>& email,
                                    const std::string& firstName, const std::string& lastName);
    /// Changes the address. An account with a password has to give it; one without gets this one, typed
    /// twice.
    Result<void> changeEmail(std::int64_t id, const std::string& email, const std::string& password,
                             const std::string& confirmation);
    Result<void> changePassword(std::int64_t id, const std::string& current, const std::string& password,
                                const std::string& confirmation);
    /// Closes the account for good.
    void disable(std::int64_t id);

private:
    std::optional<std::string> passwordDigest(std::int64_t id);

    ServerModel& model_;
};

} // namespace teralune::service
