#include "Platform/Foundation/FileDescriptor.h"
#include "Tests/Faults/FaultCounts.h"
#include "Tests/Faults/FaultInjection.h"
#include "Tests/Faults/StoreWorld.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <random>
#include <set>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace teralune {
namespace {

constexpr const char* childOption = "--child";
constexpr std::uint32_t changingCalls = ~(Fault::bit(Call::read) | Fault::bit(Call::allocate));

/// This program again, as a process of its own that may be killed. It reports each round that it has done.
class Child {
public:
    /// Does the operation of that number until the call of that number, or "rounds" without end.
    Child(const std::string& what, const std::string& folder, int number) {
        std::string words[] = {"StoreFaultTests", childOption, what, folder, std::to_string(number)};
        char* arguments[6] = {};
        for (std::size_t index = 0; index < std::size(words); ++index) {
            arguments[index] = words[index].data();
        }
        int ends[2];
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        if (pipe2(ends, O_CLOEXEC) != 0 ||
            posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO) != 0 ||
            posix_spawn(&process_, "/proc/self/exe", &actions, nullptr, arguments, environ) != 0) {
            throw std::runtime_error("no child");
        }
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        rounds_ = FileDescriptor(ends[0]);
    }

    /// False when it has ended before.
    bool waitForRound() {
        char byte = 0;
        const bool came = read(rounds_.get(), &byte, 1) == 1;
        roundsDone += came ? 1 : 0;
        return came;
    }
    void kill() const { ::kill(process_, SIGKILL); }
    /// Whether it was killed; false when it has done all that it was to do.
    bool wait() {
        while (waitForRound()) {
        }
        int status = 0;
        waitpid(process_, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) ? WEXITSTATUS(status) == 0 : WTERMSIG(status) == SIGKILL) << status;
        return WIFSIGNALED(status);
    }
    std::int64_t roundsDone = 0;

private:
    pid_t process_ = 0;
    FileDescriptor rounds_;
};

/// What a kill between any two transactions of the first rounds leaves. Later rounds repeat them.
std::vector<std::string> statesOfRounds(StoreWorld& world) {
    std::vector<std::string> states{""};
    const std::function<void()> parts[] = {
        [&] { world.mergeWithoutRemoving(world.listOfRound(states.size() / 3 + 1)); },
        [&] { world.merge(world.listOfRound(states.size() / 3 + 1)); }, [&] { world.keepSteps(); }};
    for (int part = 0; part < 12; ++part) {
        world.open();
        parts[part % 3]();
        states.push_back(world.state());
    }
    return states;
}

TEST(StoreKillTests, a_kill_at_each_call_leaves_an_allowed_state_that_the_next_run_completes) {
    const TemporaryFolder folder;
    StoreWorld world(folder.path());
    const std::vector<Operation> operations = storeOperations(&world);
    for (std::size_t index = 0; index < operations.size(); ++index) {
        const Operation& operation = operations[index];
        std::size_t kills = 0;
        bool wasKilled = true;
        for (int number = 1; wasKilled; number += isLong() ? 1 : 2) {
            world.place(operation.startName, operation.start);
            world.listed.clear();
            Child child(std::to_string(index), folder.path(), number);
            wasKilled = child.wait();
            kills += wasKilled ? 1 : 0;
            const std::string state = operation.state(world);
            ASSERT_THAT(operation.states, testing::Contains(state)) << operation.name << " " << number;
            ASSERT_TRUE(operation.opening(world) && operation.run(world)) << world.lastFailure;
            ASSERT_EQ(operation.state(world), operation.states.back()) << operation.name << " " << number;
        }
        printFaults(operation.name + " killed at a call", kills, "an allowed state, the next run right");
    }
}

TEST(StoreKillTests, a_kill_at_any_moment_leaves_what_one_of_the_transactions_has_left) {
    const TemporaryFolder folder;
    StoreWorld world(folder.path());
    const std::vector<std::string> states = statesOfRounds(world);
    std::mt19937 random(20190105);
    const std::size_t kills = faultCount(150, 4500);
    std::set<std::string> seen;
    for (std::size_t number = 0; number < kills; ++number) {
        world.place("", "");
        Child child("rounds", folder.path(), 0);
        for (std::uint_fast32_t round = random() % 4; round > 0; --round) {
            child.waitForRound();
        }
        for (std::atomic<std::uint_fast32_t> turns = random() % 2'000'000; turns > 0; --turns) {
        }
        child.kill();
        ASSERT_TRUE(child.wait());
        const std::string state = world.state();
        ASSERT_THAT(states, testing::Contains(state)) << number;
        seen.insert(state);
        const std::int64_t setting = world.setting();
        ASSERT_TRUE(setting == child.roundsDone || setting == child.roundsDone + 1)
            << setting << " after " << child.roundsDone;
        ASSERT_TRUE(world.open() && world.merge(world.oldList) && world.merge(world.newList) &&
                    world.keepSteps());
        ASSERT_EQ(world.state(), states[3]) << number;
    }
    EXPECT_GT(seen.size(), 3U) << "the kills came all at one moment";
    printFaults("rounds of settings, merge and steps killed at any moment", kills,
                std::to_string(seen.size()) + " states, all allowed; settings of the last round or the next");
}

TEST(StoreKillTests, a_store_in_use_elsewhere_is_not_repaired_and_works_on) {
    const TemporaryFolder folder;
    StoreWorld world(folder.path());
    Child child("rounds", folder.path(), 0);
    ASSERT_TRUE(child.waitForRound());
    EXPECT_FALSE(world.repair());
    EXPECT_EQ(world.lastFailure, "The notebook store is open elsewhere.");
    ASSERT_TRUE(world.open()) << world.lastFailure;
    EXPECT_TRUE(world.query());
    EXPECT_TRUE(world.merge(world.newList)) << "one waits for the other";
    ASSERT_TRUE(child.waitForRound());
    child.kill();
    EXPECT_TRUE(child.wait());
    EXPECT_TRUE(world.query() && world.merge(world.oldList));
}

int runChild(const std::string& what, const std::string& folder, int number) {
    StoreWorld world(folder);
    const auto report = [] { return write(STDOUT_FILENO, ".", 1) == 1; };
    if (what == "rounds") {
        world.open();
        world.openSettings();
        for (std::int64_t round = 1;; ++round) {
            if (!world.set(round) || !world.merge(world.listOfRound(round)) || !world.keepSteps() ||
                !report()) {
                return 1;
            }
        }
    }
    const Operation operation = storeOperations(nullptr).at(std::stoul(what));
    const bool opened = operation.opening(world);
    armFault({changingCalls, number, Fault::Effect::kills});
    const bool succeeded = opened && operation.run(world);
    world.close();
    return succeeded ? 0 : 1;
}

} // namespace

} // namespace teralune

int main(int argc, char** argv) {
    teralune::installFaults();
    if (argc == 5 && argv[1] == std::string_view(teralune::childOption)) {
        return teralune::runChild(argv[2], argv[3], std::stoi(argv[4]));
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
