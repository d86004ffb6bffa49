#include "Platform/Reachability/RtnetlinkReachabilityMonitor.h"

#include "Platform/Dispatch/CountingSemaphore.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Reachability/NetlinkSocket.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <sched.h>

#include <iostream>

namespace teralune {
namespace {

using Status = NetworkReachabilityStatus;

/// The monitor under test and what it has reported.
struct Watched {
    explicit Watched(const RtnetlinkReachabilityOptions& options = {})
        : monitor(RtnetlinkReachabilityMonitor::open("www.example.com", queue, options).value()) {
        monitor->startListening([this](Status status) { reports.push_back(status); });
    }
    Status next() {
        const std::size_t count = reports.size() + 1;
        queue->runUntil([&] { return reports.size() >= count; }, std::chrono::seconds(20));
        return reports.size() == count ? reports.back() : Status::unknown;
    }

    std::shared_ptr<MainQueue> queue = std::make_shared<MainQueue>();
    std::vector<Status> reports;
    std::unique_ptr<NetworkReachabilityMonitor> monitor;
};

void require(bool holds, const char* what) {
    if (!holds) {
        std::cerr << "failed: " << what << '\n';
        std::_Exit(1);
    }
}

void change(const std::string& command) {
    require(std::system(command.c_str()) == 0, command.c_str());
}

void addManyAddresses(const std::string& network) {
    change("for i in $(seq 250); do echo addr add " + network + ".$i.1/16 dev v1; done | ip -b -");
}

/// Whether this process has a network to itself from now on, which it may shape.
bool enterOwnNetwork() {
    const std::string root = "0 " + std::to_string(::geteuid()) + " 1";
    if (::unshare(CLONE_NEWNET) != 0) {
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
            return false;
        std::ofstream("/proc/self/uid_map") << root;
    }
    return std::system("ip link add v0 type veth peer name v1 && ip link set v1 up") == 0;
}

void followANetworkThroughItsLife() {
    const TemporaryFolder classes;
    const auto description = classes.write("v0/uevent", "INTERFACE=v0\nDEVTYPE=wwan\n");
    Watched watched({classes.path(), std::chrono::milliseconds(5), 1});
    require(watched.next() == Status::notReachable, "a first report without any network");
    change("ip link set v0 up; ip addr add 10.0.0.1/24 dev v0; ip route add default via 10.0.0.2");
    require(watched.next() == Status::reachableViaCellular, "a modem");
    change("ip link set v1 down");
    require(watched.next() == Status::notReachable, "a pulled cable");
    std::filesystem::remove(description);
    change("ip link set v1 up");
    require(watched.next() == Status::reachableViaEthernetOrWiFi, "a cable plugged in");

    // The kernel drops the routes of an interface that goes down without a word.
    change("ip link set v0 down");
    require(watched.next() == Status::notReachable, "an interface off");
    change("ip link set v0 up");
    addManyAddresses("10.1");
    classes.write("v0/uevent", "DEVTYPE=wwan\n");
    change("ip -4 route add default via inet6 fe80::1 dev v0 || ip route add default dev v0");
    require(watched.next() == Status::reachableViaCellular, "nothing before there is a route again");

    // More notifications than the smallest buffer holds.
    NetlinkSocket unread = NetlinkSocket::open(RTMGRP_IPV4_IFADDR, 1).value();
    addManyAddresses("10.2");
    change("ip route del default");
    require(watched.next() == Status::notReachable, "the truth after a flood");
    NetlinkMessages messages;
    auto reception = NetlinkSocket::Reception::messages;
    while (reception == NetlinkSocket::Reception::messages)
        reception = unread.receive(messages);
    require(reception == NetlinkSocket::Reception::lost, "noticing what was lost");
}

TEST(RtnetlinkReachabilityMonitor, tells_the_truth_through_the_life_of_a_network) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto scenario = [] {
        // Where the system allows no network of one's own, the first report of the one there is remains.
        if (enterOwnNetwork())
            followANetworkThroughItsLife();
        else
            require(Watched().next() != Status::unknown, "knowing the routes");
        std::_Exit(0);
    };
    EXPECT_EXIT(scenario(), testing::ExitedWithCode(0), "");
}

TEST(RtnetlinkReachabilityMonitor, reports_nothing_once_it_is_dropped) {
    Watched watched;
    CountingSemaphore posted(0);
    watched.queue->setWakeHandler([&] { posted.signal(); });
    posted.wait();
    watched.monitor.reset();
    watched.queue->drain();
    EXPECT_TRUE(watched.reports.empty());
    EXPECT_FALSE(RtnetlinkReachabilityMonitor::open("", watched.queue)) << "without a host to judge for";
}

} // namespace
} // namespace teralune
