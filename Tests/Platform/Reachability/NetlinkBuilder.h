#pragma once

#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cstddef>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <vector>

namespace teralune {

/// Writes a datagram of rtnetlink messages, as the kernel sends them and takes them. Attributes go into the
/// message that was begun last.
class NetlinkBuilder {
public:
    template<class Body>
    NetlinkBuilder& message(int type, const Body& body, int flags = 0) {
        pad();
        messageStart_ = bytes_.size();
        isMessage_ = true;
        nlmsghdr header{};
        header.nlmsg_type = static_cast<unsigned short>(type);
        header.nlmsg_flags = static_cast<unsigned short>(flags);
        append(header);
        append(body);
        return setLength();
    }
    template<class Value>
    NetlinkBuilder& attribute(int type, const Value& value) {
        if constexpr (std::is_convertible_v<const Value&, std::string_view>)
            return attributeBytes(type, std::string_view(value).data(), std::string_view(value).size());
        else
            return attributeBytes(type, &value, sizeof value);
    }
    /// Everything that the other builder wrote, as the value of one attribute.
    NetlinkBuilder& nest(int type, const NetlinkBuilder& inner) {
        return attributeBytes(type, inner.bytes_.data(), inner.bytes_.size());
    }
    /// Bytes without a message around them, for the inside of a nest.
    template<class Value>
    NetlinkBuilder& raw(const Value& value) {
        pad();
        append(value);
        return *this;
    }

    NetlinkBuilder& link(int index, std::string_view name, unsigned flags, int type = RTM_NEWLINK) {
        ifinfomsg body{};
        body.ifi_index = index;
        body.ifi_flags = flags;
        return message(type, body).attribute(IFLA_IFNAME, name);
    }
    NetlinkBuilder& address(int index, int family, std::string_view bytes, int scope = RT_SCOPE_UNIVERSE,
                            unsigned flags = 0, int type = RTM_NEWADDR) {
        ifaddrmsg body{};
        body.ifa_family = static_cast<unsigned char>(family);
        body.ifa_scope = static_cast<unsigned char>(scope);
        body.ifa_index = static_cast<unsigned>(index);
        return message(type, body).attribute(IFA_ADDRESS, bytes).attribute(IFA_FLAGS, flags);
    }
    /// A default route without a way out, which the caller adds.
    NetlinkBuilder& route(int family, int routeType = RTN_UNICAST, int table = RT_TABLE_MAIN,
                          int type = RTM_NEWROUTE) {
        rtmsg body{};
        body.rtm_family = static_cast<unsigned char>(family);
        body.rtm_type = static_cast<unsigned char>(routeType);
        body.rtm_table = static_cast<unsigned char>(table);
        body.rtm_protocol = RTPROT_STATIC;
        return message(type, body);
    }

    /// Makes the message that was begun last reach to the end.
    NetlinkBuilder& setLength() {
        if (isMessage_)
            header().nlmsg_len = static_cast<unsigned>(bytes_.size() - messageStart_);
        return *this;
    }
    const std::vector<std::byte>& bytes() const { return bytes_; }
    /// The message that was begun last.
    nlmsghdr& header() { return *reinterpret_cast<nlmsghdr*>(bytes_.data() + messageStart_); }

private:
    NetlinkBuilder& attributeBytes(int type, const void* value, std::size_t size) {
        pad();
        rtattr header{static_cast<unsigned short>(sizeof(rtattr) + size), static_cast<unsigned short>(type)};
        append(header);
        const auto* first = static_cast<const std::byte*>(value);
        bytes_.insert(bytes_.end(), first, first + size);
        return setLength();
    }
    template<class Value>
    void append(const Value& value) {
        const auto* first = reinterpret_cast<const std::byte*>(&value);
        bytes_.insert(bytes_.end(), first, first + sizeof value);
    }
    void pad() { bytes_.resize((bytes_.size() + 3) & ~std::size_t{3}); }

    std::vector<std::byte> bytes_;
    std::size_t messageStart_ = 0;
    bool isMessage_ = false;
};

/// The flags of a link that can carry packets.
constexpr unsigned carryingFlags = IFF_UP | IFF_RUNNING | IFF_LOWER_UP;

} // namespace teralune
