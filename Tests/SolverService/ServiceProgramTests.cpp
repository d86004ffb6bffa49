#include "Tests/SolverService/ServiceClient.h"
#include "Tests/Support/TemporaryFolder.h"

#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>

namespace teralune::service {
namespace {

TEST(ServiceProgram, says_where_it_listens_and_ends_when_told) {
    for (const int signal : {SIGINT, SIGTERM}) {
        std::FILE* const output =
            popen("echo $$; exec \"" TERALUNE_SERVICE_PROGRAM "\" --token-requests 1", "r");
        int process = 0;
        int port = 0;
        EXPECT_EQ(std::fscanf(output, "%d Listening on http://127.0.0.1:%d", &process, &port), 2);
        ServiceClient client(port);
        client.logIn();
        EXPECT_EQ(client.get("/api/hasWebNotes").status, 200);
        EXPECT_EQ(client.get("/api/hasWebNotes").status, 403);
        ASSERT_GT(process, 0);
        kill(process, signal);
        EXPECT_EQ(pclose(output), 0);
    }
}

TEST(ServiceProgram, refuses_to_run_on_what_it_can_not_use) {
    const TemporaryFolder folder;
    const std::string notData = folder.write("data", std::string(5'000, 'x'));
    const auto service = startService();
    for (const std::string& arguments : {"--port " + std::to_string(service->port()), "--data " + notData,
                                         std::string("--notes /missing")}) {
        const int status = std::system(("\"" TERALUNE_SERVICE_PROGRAM "\" " + arguments).c_str());
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << arguments;
    }
}

TEST_F(ServiceTest, serves_many_clients_at_once_and_loses_nothing) {
    client.logIn();
    const std::size_t before = client.notebook().size();
    constexpr std::size_t threads = 8;
    constexpr std::size_t notes = 12;
    std::vector<std::jthread> running(threads);
    for (std::size_t thread = 0; thread < threads; ++thread) {
        running[thread] = std::jthread([this, thread] {
            for (std::size_t note = 0; note < notes; ++note) {
                const std::string problem = "x=" + std::to_string(thread) + "." + std::to_string(note);
                EXPECT_EQ(client.post("/api/notebook/addNote", {{"problem", problem}}).status, 200);
                EXPECT_EQ(client.get("/api/hasWebNotes").body, "true");
            }
        });
    }
    running.clear();
    EXPECT_EQ(client.notebook().size(), before + threads * notes);
    EXPECT_EQ(service->requestLog().count("/api/notebook/addNote"), threads * notes);
}

} // namespace
} // namespace teralune::service
