#include "Platform/Reachability/NetlinkSocket.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cerrno>
#include <system_error>

namespace teralune {
namespace {

Error lastError() {
    return {"NetlinkSocket", errno, std::generic_category().message(errno), {}};
}

/// Large enough for any message but that of a card with very many virtual functions.
constexpr std::size_t datagramBytes = 32UL * 1024;

struct DumpRequest {
    nlmsghdr header;
    /// The longest of the three kinds of body, which share their first byte, the family; 0 is all families.
    ifinfomsg body;
};

} // namespace

NetlinkSocket::NetlinkSocket(FileDescriptor descriptor, std::uint32_t port)
    : descriptor_(std::move(descriptor))
    , port_(port)
    , buffer_(datagramBytes) {}

Result<NetlinkSocket> NetlinkSocket::open(std::uint32_t groups, int bufferBytes) {
    FileDescriptor descriptor(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
    if (!descriptor)
        return lastError();
    // A smaller buffer than wished for only makes notifications get lost sooner.
    ::setsockopt(descriptor.get(), SOL_SOCKET, SO_RCVBUF, &bufferBytes, sizeof bufferBytes);
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = groups;
    socklen_t length = sizeof address;
    if (::bind(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
        ::getsockname(descriptor.get(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return lastError();
    return NetlinkSocket(std::move(descriptor), address.nl_pid);
}

bool NetlinkSocket::requestDump(std::uint16_t messageType, std::uint32_t sequence) {
    DumpRequest request{};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = messageType;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.header.nlmsg_seq = sequence;
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    return ::sendto(descriptor_.get(), &request, sizeof request, MSG_NOSIGNAL,
                    reinterpret_cast<const sockaddr*>(&kernel), sizeof kernel) == sizeof request;
}

NetlinkSocket::Reception NetlinkSocket::receive(NetlinkMessages& messages) {
    for (;;) {
        sockaddr_nl sender{};
        iovec part{buffer_.data(), buffer_.size()};
        msghdr header{};
        header.msg_name = &sender;
        header.msg_namelen = sizeof sender;
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        const ssize_t count = ::recvmsg(descriptor_.get(), &header, 0);
        if (count < 0) {
            if (errno == EINTR)
                continue;
            if (errno == ENOBUFS)
                return Reception::lost;
            return errno == EAGAIN ? Reception::nothing : Reception::failed;
        }
        // Any process may send to our port.
        if (sender.nl_pid != 0)
            continue;
        if ((header.msg_flags & MSG_TRUNC) != 0)
            return Reception::lost;
        messages = NetlinkMessages::parse(std::span(buffer_).first(static_cast<std::size_t>(count)));
        return messages.intact ? Reception::messages : Reception::lost;
    }
}

} // namespace teralune
