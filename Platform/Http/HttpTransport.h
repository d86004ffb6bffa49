#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/UniqueFunction.h"
#include "Platform/Http/HTTPURLResponse.h"
#include "Platform/Http/URLRequest.h"

#include <memory>
#include <optional>
#include <string>

namespace teralune {

/// Which queue a transfer waits in. The control lane is kept free for the token refresh, so that it never
/// waits behind the requests that wait for it.
enum class TransferLane { standard, control };

/// How one exchange with a server ended. An error means that no complete reply arrived; a reply of any status
/// is a success here.
struct TransferOutcome {
    std::optional<HTTPURLResponse> response;
    std::string body; ///< decoded
    std::optional<Error> error;
};

/// A transfer under way; dropping it cancels it.
class Transfer {
public:
    virtual ~Transfer() = default;

    /// Cancels the transfer if nothing of it has been sent yet, and returns whether it did: then the server
    /// has not seen it and its completion does not run. Does nothing otherwise.
    virtual bool withdraw() { return false; }
};

/// Moves bytes: sends one request, follows redirects, delivers one reply. Decides nothing about statuses,
/// tokens or retries. send() may be called from any thread and never blocks.
class HttpTransport {
public:
    using Completion = UniqueFunction<void(TransferOutcome)>;

    virtual ~HttpTransport() = default;

    /// The completion runs once, on a thread of the transport, never inside send(); not at all once the
    /// transfer was dropped, but for a completion that is running at that moment.
    [[nodiscard]] virtual std::unique_ptr<Transfer> send(URLRequest request, TransferLane lane,
                                                         Completion completion) = 0;
};

} // namespace teralune
