#include "Classes/Support/Logger.h"

#include "Classes/Networking/Networking.h"
#include "Platform/Defaults/UserDefaults.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Tests/Support/FakeApplication.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

namespace teralune {
namespace {

using Lines = std::vector<std::string>;

struct LoggerTest : testing::Test {
    LoggerTest() {
        application.networkingService = &networking;
        application.fakePlatform.transport->setScript([this](const URLRequest&) {
            return isReachable ? ScriptedTransport::reply(200) : ScriptedTransport::reply(503);
        });
    }
    ~LoggerTest() override { EXPECT_EQ(application.fakePlatform.printer->takeLines(), Lines()); }

    /// Without the lines of the client, which has its own tests.
    Lines printedBy(const std::function<void()>& action) {
        action();
        application.run();
        Lines lines = application.fakePlatform.printer->takeLines();
        std::erase_if(lines, [](const std::string& line) { return line.starts_with("Error: "); });
        return lines;
    }
    std::string stored() {
        const auto array = application.platform().userDefaults->array("QueryLogCache");
        return array ? serializeJson(*array) : "nothing";
    }
    /// What was sent since the last call.
    Lines sentQueries() {
        const auto requests = application.fakePlatform.transport->requests();
        Lines queries;
        for (; seen < requests.size(); ++seen) {
            const std::string& body = *std::get<std::shared_ptr<const std::string>>(requests[seen].body);
            const std::size_t start = body.find("query=") + 6;
            queries.push_back(body.substr(start, body.find('&', start) - start));
        }
        return queries;
    }

    FakeApplication application;
    Networking networking{application, application.constants};
    std::optional<Logger> logger{std::in_place, application};
    bool isReachable = true;
    std::size_t seen = 0;
};

const std::string failed = "Failed to send cached steps log. Enqueue for later.";

TEST_F(LoggerTest, keeps_what_could_not_be_sent_and_drains_it_in_order_after_a_success) {
    isReachable = false;
    EXPECT_EQ(printedBy([&] { logger->logCachedSteps("a", "Algebra", {true}); }),
              (Lines{failed, "Saved 1 log cache items to disk."}));
    EXPECT_EQ(printedBy([&] { logger->logCachedSteps("b", std::nullopt, {false}); }),
              (Lines{failed, "Saved 2 log cache items to disk."}));
    EXPECT_EQ(stored(),
              R"([{"query":"a","topic":"Algebra","offline":"true"},{"query":"b","offline":"false"}])");

    EXPECT_EQ(printedBy([&] { logger->sendNextCachedLogs(); }),
              (Lines{"Saved 1 log cache items to disk.", "Sending cached log for query a", failed,
                     "Saved 2 log cache items to disk."}));
    EXPECT_EQ(stored(),
              R"([{"query":"b","offline":"false"},{"query":"a","topic":"Algebra","offline":"true"}])");
    EXPECT_EQ(sentQueries(), (Lines{"a", "b", "a"}));

    isReachable = true;
    const std::string sent = "Successfully sent log.";
    EXPECT_EQ(printedBy([&] { logger->logCachedSteps("c", std::nullopt, {false}); }),
              (Lines{sent, "Saved 1 log cache items to disk.", "Sending cached log for query b", sent,
                     "Saved 0 log cache items to disk.", "Sending cached log for query a", sent,
                     "No logs cached."}));
    EXPECT_EQ(stored(), "[]");
    EXPECT_EQ(sentQueries(), (Lines{"c", "b", "a"}));
}

TEST_F(LoggerTest, an_item_is_off_the_disk_before_it_is_sent) {
    isReachable = false;
    printedBy([&] { logger->logCachedSteps("a", std::nullopt, {true}); });
    logger->resendCachedLogs();
    EXPECT_EQ(stored(), "[]");
    logger.reset();
    EXPECT_EQ(printedBy([] {}).size(), 2U) << "the answer is of no more use";
    EXPECT_EQ(stored(), "[]");
}

TEST_F(LoggerTest, what_an_earlier_run_stored_stays_unread_and_is_replaced_by_the_first_save) {
    isReachable = false;
    printedBy([&] { logger->logCachedSteps("old", std::nullopt, {true}); });
    logger.emplace(application);
    EXPECT_EQ(printedBy([&] { logger->resendCachedLogs(); }), Lines{"No logs cached."});
    EXPECT_EQ(printedBy([&] { logger->resendCachedLogs(); }), Lines{"No logs cached."});
    EXPECT_EQ(stored(), R"([{"query":"old","offline":"true"}])");
    printedBy([&] { logger->logCachedSteps("new", std::nullopt, {true}); });
    EXPECT_EQ(stored(), R"([{"query":"new","offline":"true"}])");
}

TEST(QueryLog, is_read_back_with_stand_ins_for_what_is_missing) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"query":"x","topic":"t","offline":"true"})", R"({"query":"x","topic":"t","offline":"true"})"},
        {R"({"offline":"TRUE"})", R"({"query":"NO QUERY","offline":"false"})"},
        {R"({"query":7,"topic":null,"offline":true})", R"({"query":"NO QUERY","offline":"false"})"},
    };
    for (const auto& [dictionary, expected] : cases)
        EXPECT_EQ(serializeJson(QueryLog(parseJson(dictionary).value().as_object()).dictionary()), expected);
}

} // namespace
} // namespace teralune
