#include "Classes/Networking/NetworkReachability.h"
#include "Classes/Networking/Networking.h"
#include "Classes/Support/Logger.h"
#include "Classes/Support/MemoryUtil.h"
#include "Platform/Defaults/UserDefaults.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <set>
#include <thread>

namespace teralune {
namespace {

using Lines = std::vector<std::string>;

struct LoggerTest : testing::Test {
    LoggerTest() {
        application.networkingService = &networking;
        application.fakePlatform.transport->setScript(
            [this](const URLRequest&) { return ScriptedTransport::reply(isReachable ? 200 : 503); });
    }
    /// Without the lines of the client, which has its own tests.
    Lines printedBy(const std::function<void()>& action) {
        action();
        application.run();
        Lines lines = application.fakePlatform.printer->takeLines();
        std::erase_if(lines, [](const std::string& line) { return line.starts_with("Error: "); });
        return lines;
    }
    std::string stored() {
        return serializeJson(*application.platform().userDefaults->array("QueryLogCache"));
    }

    FakeApplication application;
    Networking networking{application, application.constants};
    std::optional<Logger> logger{std::in_place, application};
    bool isReachable = false;
};

const std::string failed = "Failed to send cached steps log. Enqueue for later.";
const std::string sent = "Successfully sent log.";

TEST_F(LoggerTest, keeps_what_could_not_be_sent_and_drains_it_in_order_after_a_success) {
    EXPECT_EQ(printedBy([&] { logger->logCachedSteps("a", "Algebra", {true}); }),
              (Lines{failed, "Saved 1 log cache items to disk."}));
    EXPECT_EQ(printedBy([&] { logger->logCachedSteps("b", std::nullopt, {false}); }),
              (Lines{failed, "Saved 2 log cache items to disk."}));
    EXPECT_EQ(printedBy([&] { logger->sendNextCachedLogs(); }),
              (Lines{"Saved 1 log cache items to disk.", "Sending cached log for query a", failed,
                     "Saved 2 log cache items to disk."}));
    EXPECT_EQ(stored(),
              R"([{"query":"b","offline":"false"},{"query":"a","topic":"Algebra","offline":"true"}])");
    isReachable = true;
    EXPECT_EQ(printedBy([&] { logger->logCachedSteps("c", std::nullopt, {false}); }),
              (Lines{sent, "Saved 1 log cache items to disk.", "Sending cached log for query b", sent,
                     "Saved 0 log cache items to disk.", "Sending cached log for query a", sent,
                     "No logs cached."}));
    EXPECT_EQ(stored(), "[]");
    EXPECT_EQ(application.fakePlatform.transport->requests().size(), 6U);
}

TEST_F(LoggerTest, what_an_earlier_run_stored_stays_unread_and_is_replaced_by_the_first_save) {
    printedBy([&] { logger->logCachedSteps("old", std::nullopt, {true}); });
    logger.emplace(application);
    for (int call = 0; call < 2; ++call)
        EXPECT_EQ(printedBy([&] { logger->resendCachedLogs(); }), Lines{"No logs cached."});
    EXPECT_EQ(stored(), R"([{"query":"old","offline":"true"}])");
    printedBy([&] { logger->logCachedSteps("new", std::nullopt, {true}); });
    EXPECT_EQ(stored(), R"([{"query":"new","offline":"true"}])");
}

TEST(QueryLog, is_read_back_with_stand_ins_for_what_is_missing) {
    const auto readBack = [](const char* text) {
        return serializeJson(QueryLog(parseJson(text).value().as_object()).dictionary());
    };
    for (const char* whole :
         {R"({"query":"x","topic":"t","offline":"true"})", R"({"query":"x","offline":"false"})"})
        EXPECT_EQ(readBack(whole), whole);
    for (const char* partial : {R"({"offline":"TRUE"})", R"({"query":7,"topic":null,"offline":true})"})
        EXPECT_EQ(readBack(partial), R"({"query":"NO QUERY","offline":"false"})");
}

TEST(MemoryUtil, logs_memory_pressure_in_debug_mode_only) {
    const TemporaryFolder folder;
    const std::string path = folder.path() / "pressure";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const FileDescriptor pipe(::open(path.c_str(), O_RDWR | O_NONBLOCK));
    ASSERT_EQ(::write(pipe.get(), "!", 1), 1);
    ::setenv("MEMORY_PRESSURE_WATCH", path.c_str(), 1);
    // The monitor stays for as long as the process does, and so has the application.
    static FakeApplication& application = *new FakeApplication;
    const RecordingCrashReporter& reporter = application.recordingCrashReporter;

    MemoryUtil::installMemoryWarning(application, application.constants);
    EXPECT_TRUE(reporter.lines().empty());
    application.constants.isDebug = true;
    MemoryUtil::installMemoryWarning(application, application.constants);
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (reporter.lines().size() < 2 && std::chrono::steady_clock::now() < limit)
        std::this_thread::yield();
    ::unsetenv("MEMORY_PRESSURE_WATCH");
    // The event may come before the line that announces the monitor.
    const std::vector<std::string> lines = reporter.lines();
    EXPECT_EQ(std::multiset<std::string>(lines.begin(), lines.end()),
              (std::multiset<std::string>{"Installed memory warning", "Memory warning: level warning"}));
}

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
        "InternetConnectionNotification",
        [&](const Notification& notification) { announced.push_back(std::get<bool>(*notification.object)); });
    NetworkReachabilityMonitor::Listener report;
    NetworkReachability reachability(platform.services, [&](std::string_view) {
        return std::unique_ptr<NetworkReachabilityMonitor>(std::make_unique<FakeMonitor>(report));
    });
    EXPECT_FALSE(reachability.hasInternetConnection());
    const std::tuple<Status, std::string, std::vector<bool>> steps[] = {
        {Status::notReachable, "notReachable", {}},
        {Status::reachableViaEthernetOrWiFi, "reachable(ethernetOrWiFi)", {true}},
        {Status::reachableViaCellular, "reachable(cellular)", {}},
        {Status::unknown, "unknown", {false}},
        {Status::reachableViaCellular, "reachable(cellular)", {true}},
        {Status::reachableViaEthernetOrWiFi, "reachable(ethernetOrWiFi)", {false}},
        {Status::reachableViaCellular, "reachable(cellular)", {}},
    };
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        if (i == 5)
            reachability.setSnapshotMode();
        const bool before = reachability.hasInternetConnection();
        const auto& [status, printed, announcements] = steps[i];
        report(status);
        EXPECT_EQ(platform.printer->takeLines(), std::vector{"Reachability: " + printed});
        EXPECT_EQ(std::exchange(announced, {}), announcements) << i;
        EXPECT_EQ(reachability.hasInternetConnection(), announcements.empty() ? before : announcements[0])
            << i;
    }
}

TEST(NetworkReachability, stays_not_connected_where_no_monitor_can_be_made) {
    const FakePlatform platform;
    const NetworkReachability reachability(platform.services, [](auto) {
        return Error{"Test", 1, "No.", {}};
    });
    EXPECT_FALSE(reachability.hasInternetConnection());
}

TEST(NetworkReachability, hears_the_real_monitor_on_the_main_queue) {
    FakePlatform platform;
    const auto mainQueue = std::make_shared<MainQueue>();
    platform.services.mainQueue = mainQueue;
    const NetworkReachability reachability(platform.services);
    EXPECT_TRUE(
        mainQueue->runUntil([&] { return !platform.printer->lines().empty(); }, std::chrono::seconds(20)));
}

} // namespace
} // namespace teralune
