#include "Tests/Classes/Networking/NetworkingFixture.h"

namespace teralune {
namespace {

using namespace std::chrono_literals;

class UsageLogTests : public NetworkingFixture {
protected:
    std::string body(std::size_t index) const {
        const URLRequest request = transport.requests().at(index);
        return *std::get<std::shared_ptr<const std::string>>(request.body);
    }
};

TEST_F(UsageLogTests, detailed_log_sends_every_field_and_logs_what_it_tells) {
    application.fakeUserAccountModel.signIn("c1", "t");
    networking->sendDetailedLogExtraFields(
        {LogActivityType::search, "one", "two", "x=1", 1500, {true}, {true}}, {"s", "t", "u"});
    networking->sendDetailedLog({LogActivityType::camera, "", {}, {}, {}, {}, {}});
    const auto logged = application.recordingCrashReporter.lines();
    EXPECT_EQ(logged.at(0), "Detailed log: Search - one / two");
    EXPECT_EQ(logged.at(2), "Detailed log: Camera -  / (none)");
    answerEverythingWith(reply(200, "kept"));
    EXPECT_EQ(body(0), "cached=true&connected=c1&info1=one&info2=two&language=en&offline=true&query=x%3D1"
                       "&responseTimeMs=1500&subject=s&subtopic=u&topic=t&type=Search");
    EXPECT_EQ(application.recordingCrashReporter.lines().back(),
              "Server response 200 from https://api.test/detailedLog: kept");
}

TEST_F(UsageLogTests, each_steps_request_is_timed_until_its_answer_and_before_its_completion) {
    const std::string common = "connected=&language=en&query=a%2Bb&responseTimeMs=250";
    const std::string failed = "&subject=&subtopic=&success=false&topic=";
    const std::pair<TransferOutcome, std::string> cases[] = {
        {reply(200, R"({"subject":"S","topic":"T","isFromCache":true})"),
         "cached=true&" + common + "&subject=S&subtopic=&success=true&topic=T"},
        {reply(200, "null"), common + failed},
        {ScriptedTransport::failure(HttpTransportError::timedOut), common + failed},
    };
    std::size_t sent = 0;
    for (const auto& [outcome, expected] : cases) {
        bool isTold = false;
        networking->getSolutionSteps("a+b", {}, SolutionOrigin::input, {}, [&](const SolutionStepsReply&) {
            isTold = true;
            application.fakePlatform.clock->advance(1h);
        });
        application.run();
        application.fakePlatform.clock->advance(250ms);
        answer(sent, outcome);
        EXPECT_TRUE(isTold);
        ASSERT_EQ(transport.requests().size(), sent + 2);
        EXPECT_EQ(urls()[sent + 1], "https://api.test/solutionResponseTiming");
        EXPECT_EQ(body(sent + 1), expected + "&type=SolutionResponseTiming");
        sent += 2;
    }
}

TEST_F(UsageLogTests, a_refused_record_of_cached_steps_is_recorded_as_an_error) {
    networking->logCachedSteps("q", {}, {}, [](bool) {});
    answerEverythingWith(reply(500, ""));
    const Error refused{"TeraluneNetworking", 500, "", {}};
    EXPECT_EQ(application.recordingCrashReporter.takeErrors().back().error, refused);
}

TEST_F(UsageLogTests, camera_events_go_to_the_recognition_host_and_everywhere_when_asked) {
    networking->logCameraEvent("id", "snap", "more", 12ms, {true});
    networking->logCameraEvent("id", "snap", {}, {}, {false});
    application.run();
    EXPECT_EQ(urls(),
              (std::vector<std::string>{"https://ocr.test/logCameraEvent", "https://api.test/logCameraEvent",
                                        "https://ocr.test/logCameraEvent"}));
    EXPECT_EQ(body(1), "action=snap&connected=&elapsedTimeMs=12&extraInfo=more&id=id&language=en");
    EXPECT_EQ(body(2), "action=snap&connected=&elapsedTimeMs=&extraInfo=&id=id&language=en");
}

TEST_F(UsageLogTests, recognition_asks_for_debugging_and_reports_the_problem) {
    application.constants.isDebug = true;
    networking->sendOCRRequest(std::filesystem::path("/photo"), "s", 12345, [](const OCRReply&) {});
    answerEverythingWith(reply(200, R"({"success":true,"latex":"x^2"})"));
    EXPECT_EQ(urls().front(), "https://ocr.test/api/getLatex?mode=debug&sessionid=s&language=en");
    EXPECT_EQ(application.recordingCrashReporter.lines().back(), "Successfully parsed latex: x^2");
}

} // namespace
} // namespace teralune
