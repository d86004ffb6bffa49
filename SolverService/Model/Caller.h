#pragma once

#include <cstdint>
#include <optional>

namespace teralune::service {

enum class TokenState {
    /// The request carried none.
    absent,
    /// Never issued here, or of a session that has ended.
    refused,
    /// Known, of a live session, but past its lifetime: worth a refresh.
    stale,
    valid,
};

/// Who a request comes from, as its token says.
struct Caller {
    TokenState token = TokenState::absent;
    /// Present for a valid or stale token.
    std::optional<std::int64_t> session;
    /// Present when that session is a signed-in user's.
    std::optional<std::int64_t> account;
};

} // namespace teralune::service
