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

private:
    ServerModel& model_;
};

} // namespace teralune::service
