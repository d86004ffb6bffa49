#include "Tests/SolverService/ServiceClient.h"

#include <csignal>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace teralune::service {
namespace {

/// The program with its standard output in a pipe; ended and reaped with the object.
class RunningProgram {
public:
    explicit RunningProgram(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), TERALUNE_SERVICE_PROGRAM);
        std::vector<char*> pointers;
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe(ends), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        EXPECT_EQ(posix_spawn(&process_, pointers[0], &actions, nullptr, pointers.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        output_ = fdopen(ends[0], "r");
    }
    ~RunningProgram() {
        end(SIGKILL);
        std::fclose(output_);
    }

    std::string line() {
        std::array<char, 256> text{};
        return std::fgets(text.data(), static_cast<int>(text.size()), output_) == nullptr ? "" : text.data();
    }

    /// The exit status after that signal, 0 to send none; -1 when the program died of it.
    int end(int signal) {
        if (process_ == 0) {
            return -1;
        }
        if (signal != 0) {
            kill(process_, signal);
        }
        int status = 0;
        waitpid(std::exchange(process_, 0), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t process_ = 0;
    std::FILE* output_ = nullptr;
};

TEST(ServiceProgram, says_where_it_listens_and_ends_when_told) {
    for (const int signal : {SIGINT, SIGTERM}) {
        RunningProgram program({"--token-requests", "1"});
        int port = 0;
        ASSERT_EQ(std::sscanf(program.line().c_str(), "Listening on http://127.0.0.1:%d\n", &port), 1);
        ServiceClient client(port);
        client.logIn();
        EXPECT_EQ(client.get("/api/hasWebNotes").status, 200);
        EXPECT_EQ(client.get("/api/hasWebNotes").status, 403);
        EXPECT_EQ(program.end(signal), 0);
    }
}

TEST(ServiceProgram, refuses_to_run_on_what_it_can_not_use) {
    const std::string notData = temporaryFile("solver-service-no-data");
    std::ofstream(notData) << std::string(5'000, 'x');
    const auto service = startService();
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--port", std::to_string(service->port())},
          {"--data", notData},
          {"--notes", "/missing"}}) {
        EXPECT_EQ(RunningProgram(arguments).end(0), 1) << arguments.front();
    }
}

TEST(SolverService, serves_many_clients_at_once_and_loses_nothing) {
    const auto service = startService();
    ServiceClient client(*service);
    client.logIn();
    const std::size_t before = client.notebook().size();
    constexpr int threads = 8;
    constexpr int notes = 12;
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread) {
        running.emplace_back([&client, thread] {
            for (int note = 0; note < notes; ++note) {
                const std::string problem = "x=" + std::to_string(thread) + "." + std::to_string(note);
                EXPECT_EQ(client.post("/api/notebook/addNote", {{"problem", problem}}).status, 200);
                EXPECT_EQ(client.get("/api/hasWebNotes").body, "true");
            }
        });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
    EXPECT_EQ(client.notebook().size(), before + threads * notes);
    EXPECT_EQ(service->requestLog().count("/api/notebook/addNote"),
              static_cast<std::size_t>(threads * notes));
}

TEST(SolverService, is_scripted_in_process_as_well_as_over_the_wire) {
    const auto service = startService();
    NoteRecord note;
    note.problem = "x=2";
    EXPECT_FALSE(service->addNotes("nobody@b.cd", {note}));
    EXPECT_TRUE(service->addNotes("demo@teralune.example", {note}));
    EXPECT_EQ(service->notes("demo@teralune.example").front().problem, "x=2");
    EXPECT_TRUE(service->notes("nobody@b.cd").empty());
    service->stop();
    service->stop();
    EXPECT_EQ(ServiceClient(*service).get("/image?width=1").status, 0);
}

} // namespace
} // namespace teralune::service
