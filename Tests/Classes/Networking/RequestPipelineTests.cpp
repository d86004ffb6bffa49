#include "Platform/Foundation/BundleExtension.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Http/CookieStorage.h"
#include "Tests/Classes/Networking/NetworkingFixture.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <limits>

namespace teralune {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class RequestPipelineTests : public NetworkingFixture {
protected:
    std::string adapted(const std::string& url) {
        URLRequest request;
        request.url = url;
        request.headers.add("Cookie", "left=over");
        return networking->adapt(std::move(request)).value().headers.value("Cookie").value();
    }
    std::string standardCookies() const {
        return "tq.platform=iOS;tq.app=My_App/3.1.42;tq.device=Test_Device_7;tq.os=12;tq.installation=" +
               application.settings.installationID() + ";tq.orientation=portrait;tq2.decimal=5";
    }
    void exchange(int status, HttpHeaders headers) {
        networking->hasWebNotes([](bool) {});
        answerEverythingWith(ScriptedTransport::reply(status, "{}", std::move(headers)));
    }
};

TEST_F(RequestPipelineTests, cookie_header_carries_identity_session_and_the_token_in_force) {
    EXPECT_EQ(adapted("https://api.test/x"), standardCookies());

    exchange(200, {{"Set-Cookie", "a=b"}, {"Set-Cookie", "PLAY_SESSION=s 1; Path=/"}});
    application.settings.setAccessToken("new");
    application.settings.setLogoutAccessToken("old");
    EXPECT_EQ(adapted("https://api.test/x"), standardCookies() + ";PLAY_SESSION=s_1;tq.token=new");
    EXPECT_EQ(adapted("https://api.test/logout?isMobile=true"),
              standardCookies() + ";PLAY_SESSION=s_1;tq.token=old");

    // Whoever has stored such a token: the requests go on without it.
    application.settings.setAccessToken("n\x01w");
    EXPECT_EQ(adapted("https://api.test/x"), standardCookies() + ";PLAY_SESSION=s_1");
    application.settings.setAccessToken("n\t\nw");
    EXPECT_THAT(adapted("https://api.test/x"), HasSubstr(";tq.token=n_w"));
}

TEST_F(RequestPipelineTests, cookie_values_are_read_afresh_and_lose_their_separators) {
    const std::pair<std::int64_t, const char*> orientations[] = {
        {0, "unknown"},   {1, "portrait"}, {2, "portrait"}, {3, "landscape"},
        {4, "landscape"}, {5, "unknown"},  {-1, "unknown"},
    };
    for (const auto& [value, orientation] : orientations) {
        application.orientation = value;
        EXPECT_THAT(adapted("u"), HasSubstr(std::string("tq.orientation=") + orientation + ";"));
    }
    application.settings.setNumDecimalDisplay(-1);
    EXPECT_THAT(adapted("u"), HasSubstr("tq2.decimal=-1"));

    const std::pair<const char*, const char*> values[] = {
        {"plain-1.2/~", "plain-1.2/~"}, {"a, ;=b", "a_b"}, {" a\t\v\f\r\nb ", "_a_b_"},
        {"a\u00a0\u3000b", "a_b"},      {"é", "é"},        {"", ""},
    };
    for (const auto& [value, expected] : values)
        EXPECT_EQ(Networking::cookie("n", value), std::string("n=") + expected);
}

TEST_F(RequestPipelineTests, session_cookie_is_taken_from_any_reply_that_carries_it) {
    const std::tuple<int, const char*, std::string> cases[] = {
        {200, "PLAY_SESSION=one; Path=/", "one"},
        {500, "PLAY_SESSION=two; Path=/", "two"},
        {200, "PLAY_SESSION=three", "two"},
        {200, "PLAY_SESSION=; Path=/", "two"},
        {200, "OTHER=x;", "two"},
        {200, "a=b, PLAY_SESSION=four;", "four"},
        {200, "PLAY_SESSION=f\x7fve; Path=/", "four"},
    };
    for (const auto& [status, setCookie, session] : cases) {
        exchange(status, {{"Set-Cookie", setCookie}});
        EXPECT_THAT(adapted("u"), HasSubstr(";PLAY_SESSION=" + session));
    }
    EXPECT_TRUE(networking->validateResponse({"u", 299, {{"Set-Cookie", "PLAY_SESSION=five;"}}}, {}));
    EXPECT_THAT(adapted("u"), HasSubstr(";PLAY_SESSION=five"));
}

TEST_F(RequestPipelineTests, a_bad_status_is_recorded_with_the_request) {
    URLRequest request;
    request.url = "https://api.test/x";
    for (const int status : {199, 300, 404}) {
        EXPECT_FALSE(networking->validateResponse({"u", status, {}}, request));
        const auto recorded = application.recordingCrashReporter.takeErrors();
        ASSERT_EQ(recorded.size(), 1U);
        EXPECT_EQ(recorded[0].error, (Error{"TeraluneNetworking", status, "", {}}));
        EXPECT_EQ(std::get<std::string>(recorded[0].error.userInfo.at("Request")), "GET https://api.test/x");
    }
}

TEST_F(RequestPipelineTests, failures_are_reported_with_address_and_status) {
    const std::pair<TransferOutcome, std::int64_t> cases[] = {
        {ScriptedTransport::failure(HttpTransportError::cancelled), 0},
        {ScriptedTransport::failure(HttpTransportError::serverCertificateUntrusted), 0},
        {ScriptedTransport::failure(HttpTransportError::timedOut), 0},
        {reply(404, "{}"), 404},
    };
    std::size_t mayBeCancelled = 0;
    for (const auto& [outcome, status] : cases) {
        networking->hasWebNotes([](bool) {});
        answerEverythingWith(outcome);
        const auto recorded = application.recordingCrashReporter.takeErrors();
        ASSERT_EQ(recorded.size(), 1U);
        const auto& [error, info] = recorded[0];
        EXPECT_EQ(std::get<std::string>(info.at("url")), "https://api.test/api/hasWebNotes");
        EXPECT_EQ(std::get<std::int64_t>(info.at("responseCode")), status);
        EXPECT_EQ(application.fakePlatform.printer->takeLines(),
                  std::vector{"Error: " + error.localizedDescription});
        const auto lines = application.recordingCrashReporter.takeLines();
        mayBeCancelled += std::count(lines.begin(), lines.end(),
                                     "Request failed with -999 CANCELED. May also indicate a server "
                                     "certificate validation failure.");
    }
    EXPECT_EQ(mayBeCancelled, 2U);
}

TEST_F(RequestPipelineTests, replies_that_a_cache_would_keep_are_logged) {
    networking->hasWebNotes([](bool) {});
    answerEverythingWith(
        ScriptedTransport::reply(200, std::string(120, 'a'), {{"Cache-Control", "max-age=60"}}));
    EXPECT_THAT(application.recordingCrashReporter.lines(),
                Contains("Server response 200 from https://api.test/api/hasWebNotes: " +
                         std::string(100, 'a') + " ... (and 20 more)"));
}

TEST_F(RequestPipelineTests, requests_are_logged_without_secrets) {
    const auto ignore = [](const SignInReply&) {};
    networking->logInWith("a@b", "s3cret", ignore);
    networking->signupWith("a@b", "F", "L", "s3cret", ignore);
    networking->microsoftAuthWith("s3cret", "s3cret", "r", ignore);
    networking->facebookAuthWith({{"name", "s3cret"}}, ignore);
    (void)networking->updateEmail("a@b", "s3cret", "s3cret");
    (void)networking->changePassword("s3cret", "s3cret", "s3cret");
    (void)networking->makeRequest("", HttpMethod::post, {}, networking->sessionManagerWithAnyToken());
    const auto lines = application.recordingCrashReporter.lines();
    EXPECT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines.front(), "Request to: https://api.test/mobileLogin, with parameters: "
                             "email=a@b, lang=en, password=•••");
    EXPECT_EQ(lines.back(), "Request to: (empty URL), with parameters: ");
    EXPECT_THAT(lines, Not(Contains(HasSubstr("s3cret"))));
}

TEST_F(RequestPipelineTests, a_profile_that_is_no_json_is_not_sent) {
    const std::pair<boost::json::object, const char*> profiles[] = {
        {{{"a", {1, std::numeric_limits<double>::infinity()}}},
         "Could not serialize facebook response to json"},
        {{{"a", "\xff"}}, "Could not make string from json data"},
    };
    for (const auto& [profile, line] : profiles) {
        int told = 0;
        networking->facebookAuthWith(profile, [&](const SignInReply& map) { told += map ? 100 : 1; });
        EXPECT_EQ(told, 0);
        application.run();
        EXPECT_EQ(told, 1);
        EXPECT_EQ(application.recordingCrashReporter.takeLines(), std::vector<std::string>{line});
    }
    EXPECT_TRUE(transport.requests().empty());
}

TEST_F(RequestPipelineTests, texts_are_percent_encoded_for_where_they_stand) {
    const std::string text = "a+b=c&d/e'f";
    EXPECT_EQ(networking->urlEncode(text), "a%2Bb=c%26d/e'f");
    EXPECT_EQ(Networking::encodeString(text), "a+b=c&d/e%27f");
    EXPECT_EQ(Networking::encodeStringForQuery(text), "a%2Bb%3Dc%26d%2Fe%27f");
    EXPECT_EQ(networking->urlEncode("x^2 #%é"), "x%5E2%20%23%25%C3%A9");
    EXPECT_EQ(networking->urlEncode("a\xff"), "a%EF%BF%BD");
    EXPECT_FALSE(Networking::encodeString("a\xff") || Networking::encodeStringForQuery("a\xff"));
}

TEST_F(RequestPipelineTests, cookies_can_be_added_to_a_request_and_taken_from_the_shared_storage) {
    URLRequest request;
    request.url = "https://api.test/x";
    networking->addCookieTo(request, "a", "1");
    networking->addCookieTo(request, "b", "2 3");
    EXPECT_EQ(request.headers.value("Cookie"), "a=1;b=2_3");

    CookieStorage& storage = *application.fakePlatform.services.cookieStorage;
    storage.set({"n", "v", "api.test", "/"});
    storage.set({"n", "v", "other.test", "/"});
    networking->removeURLCookiesFrom(request);
    EXPECT_TRUE(storage.cookies("https://api.test/x").empty());
    EXPECT_EQ(storage.cookies("https://other.test/x").size(), 1U);
}

TEST_F(RequestPipelineTests, local_pages_are_found_for_the_kind_of_device) {
    const TemporaryFolder folder;
    folder.write("my page_ipad.html", "");
    auto& services = application.fakePlatform.services;
    services.mainBundle = std::make_shared<BundleExtension>(folder.path(), services.userDefaults);
    EXPECT_FALSE(networking->staticLocalURL("my page"));
    application.fakePlatform.device->kind = Device::Idiom::tablet;
    const std::string url = "file://" + folder.path().string() + "/my%20page_ipad.html";
    EXPECT_EQ(networking->staticLocalURL("my page"), url);
    EXPECT_EQ(application.fakePlatform.systemLog->lines().back(), "Static URL: " + url);
}

} // namespace
} // namespace teralune
