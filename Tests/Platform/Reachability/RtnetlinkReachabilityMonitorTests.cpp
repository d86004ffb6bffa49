#include "Platform/Reachability/RtnetlinkReachabilityMonitor.h"

#include "Platform/Dispatch/CountingSemaphore.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Reachability/NetlinkSocket.h"
#include "Tests/Platform/Reachability/NetworkNamespace.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <iostream>

namespace teralune {
namespace {

using Status = NetworkReachabilityStatus;

constexpr std::chrono::seconds patience(20);

/// The monitor under test and what it has reported.
struct Watched {
    explicit Watched(const RtnetlinkReachabilityOptions& options = {})
        : monitor(RtnetlinkReachabilityMonitor::open("www.example.com", queue, options).value()) {
        monitor->startListening([this](Status status) { reports.push_back(status); });
    }

    /// Whether the next report comes and is this one.
    bool reportsNext(Status status) {
        const std::size_t count = reports.size() + 1;
        return queue->runUntil([&] { return reports.size() >= count; }, patience) &&
               reports.size() == count && reports.back() == status;
    }

    std::shared_ptr<MainQueue> queue = std::make_shared<MainQueue>();
    std::vector<Status> reports;
    std::unique_ptr<NetworkReachabilityMonitor> monitor;
};

void require(bool holds, const char* step) {
    if (holds)
        return;
    std::cerr << "failed: " << step << '\n';
    std::_Exit(1);
}

/// Three hundred addresses and as many notifications.
void addManyAddresses(const std::string& name, int high) {
    for (int low = 1; low <= 250; ++low)
        require(NetworkNamespace::addAddress(name, high, low), "an address");
}

void followANetworkThroughItsLife() {
    const TemporaryFolder classes;
    const auto description = classes.write("v0/uevent", "INTERFACE=v0\nDEVTYPE=wwan\n");
    Watched watched({classes.path(), std::chrono::milliseconds(5), 1});
    require(watched.reportsNext(Status::notReachable), "the first report, without any network");

    require(NetworkNamespace::addCable("v0", "v1") && NetworkNamespace::setUp("v1", true) &&
                NetworkNamespace::setUp("v0", true) && NetworkNamespace::addAddress("v0", 0, 1) &&
                NetworkNamespace::addDefaultRoute("v0"),
            "a network");
    require(watched.reportsNext(Status::reachableViaCellular), "a modem");
    std::filesystem::remove(description);
    require(NetworkNamespace::setUp("v1", false), "pulling the cable");
    require(watched.reportsNext(Status::notReachable), "a pulled cable");
    require(NetworkNamespace::setUp("v1", true), "plugging the cable in");
    require(watched.reportsNext(Status::reachableViaEthernetOrWiFi), "a cable plugged in");

    // The kernel drops the routes of an interface that goes down without a word.
    require(NetworkNamespace::setUp("v0", false), "switching the interface off");
    require(watched.reportsNext(Status::notReachable), "an interface off");
    require(NetworkNamespace::setUp("v0", true), "switching the interface on");
    addManyAddresses("v1", 1);
    classes.write("v0/uevent", "DEVTYPE=wwan\n");
    require(NetworkNamespace::addDefaultRouteThroughSixthVersion("v0") ||
                NetworkNamespace::addDefaultRoute("v0"),
            "a route again");
    require(watched.reportsNext(Status::reachableViaCellular), "not before there is a route again");

    // More notifications than the smallest buffer holds.
    NetlinkSocket unread = NetlinkSocket::open(RTMGRP_IPV4_IFADDR, 1).value();
    addManyAddresses("v1", 2);
    require(NetworkNamespace::removeDefaultRoute(), "taking the route away");
    require(watched.reportsNext(Status::notReachable), "the truth after a flood");
    NetlinkMessages messages;
    NetlinkSocket::Reception reception = NetlinkSocket::Reception::messages;
    while (reception == NetlinkSocket::Reception::messages)
        reception = unread.receive(messages);
    require(reception == NetlinkSocket::Reception::lost, "noticing what was lost");
}

TEST(RtnetlinkReachabilityMonitor, tells_the_truth_through_the_life_of_a_network) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            // Where the system allows no network of one's own, the first report of the one there is remains.
            if (NetworkNamespace::enter()) {
                followANetworkThroughItsLife();
            } else {
                Watched watched;
                require(watched.queue->runUntil([&] { return watched.reports.size() == 1; }, patience),
                        "the first report");
                require(watched.reports.front() != Status::unknown, "knowing the routes");
            }
            std::cerr << "done\n";
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "^done");
}

TEST(RtnetlinkReachabilityMonitor, reports_nothing_once_it_is_dropped) {
    Watched watched;
    CountingSemaphore posted(0);
    watched.queue->setWakeHandler([&] { posted.signal(); });
    posted.wait();
    watched.monitor.reset();
    watched.queue->drain();
    EXPECT_TRUE(watched.reports.empty());
}

TEST(RtnetlinkReachabilityMonitor, cannot_be_made_without_a_host_or_without_sockets) {
    const auto queue = std::make_shared<MainQueue>();
    EXPECT_FALSE(RtnetlinkReachabilityMonitor::open("", queue));
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    // One more file each time, so that each of those it needs is refused once.
    const FileDescriptor next(::dup(0));
    for (int files = 0; files < 3; ++files) {
        const rlimit none{static_cast<rlim_t>(next.get() + 1 + files), before.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
        const auto monitor = RtnetlinkReachabilityMonitor::open("www.example.com", queue);
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
        ASSERT_FALSE(monitor);
        EXPECT_EQ(monitor.error().code, EMFILE);
    }
    EXPECT_TRUE(RtnetlinkReachabilityMonitor::open("www.example.com", queue));
}

} // namespace
} // namespace teralune
