#pragma once

#include "Platform/Foundation/Result.h"
#include "Platform/Reachability/InterfaceTable.h"
#include "Platform/Reachability/NetlinkSocket.h"

#include <cstdint>
#include <optional>

namespace teralune {

class WakeEvent;

/// Reads the kernel's tables whole. It has a socket of its own, so that no notification comes between the
/// answers. Used by one thread.
class InterfaceTableReader {
public:
    /// Fails where the process may have no such socket.
    static Result<InterfaceTableReader> open();

    /// The tables as they are now. Absent when the kernel refuses, does not answer in time, or when the wait
    /// for it was ended; the next call then begins afresh.
    std::optional<InterfaceTable> read(const WakeEvent& end);

private:
    enum class Outcome { whole, interrupted, failed };

    explicit InterfaceTableReader(NetlinkSocket socket) : socket_(std::move(socket)) {}
    Outcome readOnce(InterfaceTable& table, const WakeEvent& end);
    Outcome readKind(std::uint16_t messageType, InterfaceTable& table, const WakeEvent& end);

    std::optional<NetlinkSocket> socket_;
    std::uint32_t sequence_ = 0;
};

} // namespace teralune
