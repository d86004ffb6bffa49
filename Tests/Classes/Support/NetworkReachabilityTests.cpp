#include "Classes/Networking/NetworkReachability.h"

#include "Platform/Dispatch/MainQueue.h"
#include "Tests/Support/FakePlatform.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

using Status = NetworkReachabilityStatus;

/// Reports what the test tells it to.
struct FakeMonitor final : NetworkReachabilityMonitor {
    explicit FakeMonitor(Listener& installed) : listener(installed) {}
    void startListening(Listener given) override { listener = std::move(given); }
    Listener& listener;
};

TEST(NetworkReachability, announces_each_change_once_and_none_in_snapshot_mode) {
    FakePlatform platform;
    std::vector<bool> announced;
    const Observation observation = platform.notificationCenter->observe(
        "InternetConnectionNotification", [&](const Notification& notification) {
            EXPECT_TRUE(notification.userInfo.empty());
            announced.push_back(std::get<bool>(notification.object.value()));
        });
    NetworkReachabilityMonitor::Listener report;
    std::string host;
    NetworkReachability reachability(platform.services, [&](std::string_view probeHost) {
        host = probeHost;
        return std::unique_ptr<NetworkReachabilityMonitor>(std::make_unique<FakeMonitor>(report));
    });
    EXPECT_FALSE(host.empty());
    EXPECT_FALSE(reachability.hasInternetConnection());

    struct Step {
        Status status;
        const char* printed;
        bool connected;
        std::size_t announcements;
    };
    const auto follow = [&](const std::vector<Step>& steps) {
        for (const Step& step : steps) {
            report(step.status);
            EXPECT_EQ(platform.printer->takeLines(),
                      std::vector{"Reachability: " + std::string(step.printed)});
            EXPECT_EQ(reachability.hasInternetConnection(), step.connected) << step.printed;
            ASSERT_EQ(announced.size(), step.announcements) << step.printed;
            EXPECT_EQ(!announced.empty() && announced.back(), step.connected) << step.printed;
        }
    };
    follow({{Status::notReachable, "notReachable", false, 0},
            {Status::reachableViaEthernetOrWiFi, "reachable(ethernetOrWiFi)", true, 1},
            {Status::reachableViaCellular, "reachable(cellular)", true, 1},
            {Status::unknown, "unknown", false, 2},
            {Status::reachableViaCellular, "reachable(cellular)", true, 3}});
    reachability.setSnapshotMode();
    EXPECT_TRUE(reachability.hasInternetConnection());
    follow({{Status::reachableViaEthernetOrWiFi, "reachable(ethernetOrWiFi)", false, 4},
            {Status::reachableViaCellular, "reachable(cellular)", false, 4}});
}

TEST(NetworkReachability, stays_not_connected_where_no_monitor_can_be_made) {
    FakePlatform platform;
    const NetworkReachability reachability(platform.services, [](std::string_view) {
        return Error{"Test", 1, "No sockets here.", {}};
    });
    platform.run();
    EXPECT_FALSE(reachability.hasInternetConnection());
    EXPECT_TRUE(platform.printer->takeLines().empty());
}

TEST(NetworkReachability, hears_the_real_monitor_on_the_main_queue) {
    FakePlatform platform;
    const auto mainQueue = std::make_shared<MainQueue>();
    platform.services.mainQueue = mainQueue;
    const NetworkReachability reachability(platform.services);
    EXPECT_TRUE(
        mainQueue->runUntil([&] { return !platform.printer->lines().empty(); }, std::chrono::seconds(20)));
    EXPECT_TRUE(platform.printer->lines().front().starts_with("Reachability: "));
}

} // namespace
} // namespace teralune
