#pragma once

#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/Result.h"
#include "Platform/Reachability/NetlinkMessages.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace teralune {

/// A socket to the kernel's routing tables; it never blocks. Used by one thread at a time.
class NetlinkSocket {
public:
    /// What receive() found. After lost, notifications are missing and the tables have to be read again;
    /// after failed, the socket is of no more use.
    enum class Reception { messages, nothing, lost, failed };

    /// Joins these groups (RTMGRP_…); fails where the process may have no such socket. The buffer is what the
    /// kernel keeps for us while we don't read; it may give less.
    static Result<NetlinkSocket> open(std::uint32_t groups, int bufferBytes = 1 << 20);

    int descriptor() const { return descriptor_.get(); }
    /// The number that answers to our own requests carry.
    std::uint32_t port() const { return port_; }

    /// Asks for all of one kind: RTM_GETLINK, RTM_GETADDR or RTM_GETROUTE. One request at a time.
    bool requestDump(std::uint16_t messageType, std::uint32_t sequence);
    /// The next datagram of the kernel; datagrams of anyone else are thrown away.
    Reception receive(NetlinkMessages& messages);

private:
    NetlinkSocket(FileDescriptor descriptor, std::uint32_t port);

    FileDescriptor descriptor_;
    std::uint32_t port_;
    std::vector<std::byte> buffer_;
};

} // namespace teralune
