#include "Classes/Support/LocalCrashReporter.h"

#include "Tests/Support/ManualClock.h"
#include "Tests/Support/RecordingPrinter.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <sstream>
#include <thread>
#include <vector>

namespace teralune {
namespace {

using testing::ElementsAre;

class LocalCrashReporterTests : public testing::Test {
protected:
    std::string log(const char* suffix = "") const { return TemporaryFolder::read(file_.string() + suffix); }
    std::vector<std::string> lines() const {
        std::istringstream stream(log());
        std::vector<std::string> found;
        for (std::string line; std::getline(stream, line);)
            found.push_back(line);
        return found;
    }
    LocalCrashReporter reporter(std::uintmax_t sizeLimit = LocalCrashReporter::DefaultSizeLimit) {
        return LocalCrashReporter(file_, std::make_shared<ManualClock>(), printer_, sizeLimit);
    }

    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "logs" / "teralune.log";
    std::shared_ptr<RecordingPrinter> printer_ = std::make_shared<RecordingPrinter>();
};

TEST_F(LocalCrashReporterTests, lines_and_errors_go_to_a_private_file_with_their_time_and_to_the_printer) {
    {
        LocalCrashReporter first = reporter();
        first.TRL_CLSNSLogv("Server response %ld from %@", {std::int64_t{200}, std::string("http://host/a")});
        first.recordError({"Store", 11, "is malformed", {{"rows", std::int64_t{3}}}},
                          {{"url", std::string("u")}});
    }
    reporter().TRL_CLSNSLogv("torn\nin\ttwo \xff");
    EXPECT_THAT(lines(),
                ElementsAre("2020-01-01T00:00:00.000Z Server response 200 from http://host/a",
                            "2020-01-01T00:00:00.000Z error Store 11: is malformed {rows: 3, url: u}",
                            "2020-01-01T00:00:00.000Z torn in two \uFFFD"));
    EXPECT_EQ(printer_->lines().front(), "Server response 200 from http://host/a");
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(file_).permissions(), perms::owner_read | perms::owner_write);
    EXPECT_EQ(std::filesystem::status(file_.parent_path()).permissions(), perms::owner_all);
}

TEST_F(LocalCrashReporterTests, a_token_is_masked_wherever_a_line_holds_one) {
    LocalCrashReporter local = reporter();
    local.TRL_CLSNSLogv("Successfully received new access token: %@", {std::string("s3cret")});
    local.TRL_CLSNSLogv("Server response %ld from %@: %@",
                        {std::int64_t{200}, std::string("/mobileLogin"), std::string(R"({"jwt":"s3cret"})")});
    local.recordError({"Networking", 403, "refused", {{"Request", std::string("Cookie: tq.token=s3cret")}}});
    EXPECT_THAT(printer_->lines(), ElementsAre("Successfully received new access token: •••",
                                               "Server response 200 from /mobileLogin: •••",
                                               "error Networking 403: refused {Request: •••}"));
    EXPECT_EQ(log().find("s3cret"), std::string::npos);
}

TEST_F(LocalCrashReporterTests, a_full_file_is_set_aside_once_even_by_two_reporters) {
    LocalCrashReporter first = reporter(200);
    LocalCrashReporter second = reporter(200);
    for (int i = 0; i < 40; ++i)
        (i % 2 == 0 ? first : second).TRL_CLSNSLogv("line %d", {std::int64_t{i}});
    EXPECT_NE(log().find("line 39\n"), std::string::npos);
    EXPECT_LE(log().size(), 250U);
    EXPECT_GT(log(".1").size(), 200U);
    // Nothing between the two is missing.
    EXPECT_NE((log(".1") + log()).find("line 33\n"), std::string::npos);
}

TEST_F(LocalCrashReporterTests, what_can_not_be_written_is_dropped_without_harm) {
    file_ = "/proc/no-such-folder/log";
    reporter().TRL_CLSNSLogv("a line");
    EXPECT_THAT(printer_->takeLines(), ElementsAre("a line"));

    // A file that may not grow is what a full disk looks like.
    file_ = folder_.path() / "small.log";
    LocalCrashReporter local = reporter();
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full{60, before.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    local.TRL_CLSNSLogv("first line");
    local.TRL_CLSNSLogv("second line");
    local.TRL_CLSNSLogv("third line");
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, SIG_DFL);
    local.TRL_CLSNSLogv("fourth line");
    EXPECT_THAT(lines(),
                ElementsAre("2020-01-01T00:00:00.000Z first line", testing::StartsWith("2020-01-01T00:00"),
                            "2020-01-01T00:00:00.000Z fourth line"));
}

TEST_F(LocalCrashReporterTests, lines_of_several_threads_do_not_mix) {
    LocalCrashReporter local = reporter();
    {
        std::vector<std::jthread> threads(4);
        for (std::jthread& thread : threads)
            thread = std::jthread([&local] {
                for (int j = 0; j < 50; ++j)
                    local.TRL_CLSNSLogv("whole %@ line", {std::string(60, 'x')});
            });
    }
    const std::vector<std::string> all = lines();
    EXPECT_EQ(all, std::vector<std::string>(200, all.front()));
}

} // namespace
} // namespace teralune
