#pragma once

#include "SolverService/Model/Caller.h"
#include "SolverService/Model/ServerModel.h"

#include <chrono>
#include <optional>
#include <string>

namespace teralune::service {

/// How long an access token is good for; whatever is absent never ends it.
struct TokenLifetime {
    std::optional<std::int64_t> requests;
    std::optional<std::chrono::seconds> time;
};

/// Access tokens and the sessions behind them. A token past its lifetime is stale: its session lives on
/// and a refresh gets a new token for it, while a token of an ended session is worth nothing any more.
/// Only digests of tokens are kept. Used from any thread.
class Tokens {
public:
    Tokens(ServerModel& model, TokenLifetime lifetime) : model_(model), lifetime_(lifetime) {}

    /// Begins a session, anonymous without an account, and issues its first token.
    std::string begin(std::optional<std::int64_t> account);
    /// A further token of a live session.
    std::string issue(std::int64_t session);

    /// Who the token stands for; counts as one request against its lifetime.
    Caller use(const std::optional<std::string>& token);
    /// The same, but counts nothing.
    Caller look(const std::optional<std::string>& token);

    void end(std::int64_t session);
    /// Ends every session of the account but one.
    void endOthers(std::int64_t account, std::optional<std::int64_t> kept);
    void endAll();
    /// Makes every token issued so far stale.
    void expireAll();

private:
    Caller read(const std::optional<std::string>& token, bool counts);

    ServerModel& model_;
    TokenLifetime lifetime_;
};

} // namespace teralune::service
