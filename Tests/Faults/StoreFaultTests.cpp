#include "Platform/Foundation/FileDescriptor.h"
#include "Tests/Faults/FaultCounts.h"
#include "Tests/Faults/FaultInjection.h"
#include "Tests/Faults/StoreWorld.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <random>
#include <set>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace teralune {
namespace {

/// What is done under a fault, with the file that it begins with and the states that it may leave behind.
struct Operation {
    std::string name;
    /// The file's name and bytes, and what is done with it before the fault.
    std::string startName;
    std::string start;
    std::function<bool(StoreWorld&)> opening;
    std::function<bool(StoreWorld&)> run;
    std::function<std::string(StoreWorld&)> state;
    /// The last one is that of success.
    std::vector<std::string> states;
};

/// A state and the file that holds it.
struct Scene {
    std::string state;
    std::string bytes;
};

/// What comes of that file, or of none, when this is done with it.
Scene scene(StoreWorld& world, const std::string& start, const std::function<void(StoreWorld&)>& what) {
    world.place(start.empty() ? "" : StoreWorld::storeName, start);
    world.open();
    what(world);
    std::string state = world.state();
    return {std::move(state), world.bytes()};
}

/// Each operation that touches the disk. Their files are made in the world; without one they have neither
/// files nor states, which is enough to run them.
std::vector<Operation> storeOperations(StoreWorld* made) {
    using World = StoreWorld&;
    using Run = bool (*)(World);
    const Run merge = [](World world) { return world.merge(world.newList); };
    const Run keepSteps = [](World world) { return world.keepSteps(); };
    const Run open = [](World world) { return world.open(); };
    const Run openSettings = [](World world) { return world.openSettings(); };
    const Run nothing = [](World) { return true; };
    const auto notes = [](World world) { return world.state(); };
    const auto setting = [](World world) { return std::to_string(world.setting()); };
    Scene old, cached, both, all, untagged, damaged, migrated;
    std::string version1, settings, listed;
    if (made != nullptr) {
        old = scene(*made, "", [](World world) { world.merge(world.oldList); });
        cached = scene(*made, old.bytes, keepSteps);
        both = scene(*made, cached.bytes, [](World world) { world.mergeWithoutRemoving(world.newList); });
        all = scene(*made, cached.bytes, merge);
        untagged = scene(*made, cached.bytes,
                         [](World world) { world.query(), world.execute("DELETE FROM links"); });
        listed = made->listed;
        damaged = scene(*made, cached.bytes, [](World world) {
            world.execute("DROP INDEX entriesByProblem; CREATE TABLE planted(id)");
        });
        version1 = StoreWorld::bytes(TERALUNE_TEST_VERSION1);
        migrated = scene(*made, version1, nothing);
        made->place("", "");
        made->openSettings() && made->set(1) && made->close();
        settings = StoreWorld::bytes(made->settingsFile);
    }
    const char* const store = StoreWorld::storeName;
    // clang-format off
    return {
        {"first open", "", "", nothing, open, notes, {""}},
        {"open", store, cached.bytes, nothing, open, notes, {cached.state}},
        {"migration", store, version1, nothing, open, notes, {migrated.state}},
        {"merge", store, cached.bytes, open, merge, notes, {cached.state, both.state, all.state}},
        {"query", store, cached.bytes, open, [](World world) { return world.query(); },
         [](World world) { return world.close(), world.listed; }, {"", "failed", listed}},
        {"steps", store, old.bytes, open, keepSteps, notes, {old.state, cached.state}},
        {"sign-out", store, cached.bytes, open, [](World world) { return world.clear(); }, notes, {cached.state, untagged.state, ""}},
        {"close", store, cached.bytes, [](World world) { return world.open() && world.merge(world.newList); },
         [](World world) { return world.close(); }, notes, {all.state}},
        {"repair", store, damaged.bytes, nothing, [](World world) { return world.repair(); }, notes, {cached.state}},
        {"first settings", "", "", nothing, [](World world) { return world.openSettings() && world.set(2); }, setting, {"0", "2"}},
        {"settings", StoreWorld::settingsName, settings, openSettings, [](World world) { return world.set(2); }, setting, {"1", "2"}},
    };
    // clang-format on
}

std::ptrdiff_t openDescriptors() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}

TEST(StoreFaultTests, each_call_that_fails_is_reported_and_leaves_a_state_that_the_next_run_mends) {
    using Effect = Fault::Effect;
    constexpr std::pair<const char*, Call> calls[] = {
        {"read", Call::read},         {"write", Call::write},   {"sync", Call::sync},
        {"truncate", Call::truncate}, {"open", Call::open},     {"remove", Call::remove},
        {"map", Call::map},           {"rename", Call::rename}, {"allocation", Call::allocate}};
    const TemporaryFolder folder;
    StoreWorld world(folder.path());
    for (const Operation& operation : storeOperations(&world)) {
        std::string counts;
        std::size_t allPoints = 0;
        for (const auto& [name, call] : calls) {
            // What can't be read is just what a repair does without.
            if (operation.name == "repair" && call == Call::read) {
                continue;
            }
            std::size_t points = 0;
            for (const Effect effect :
                 {Effect::fails, Effect::failsFromThenOn, Effect::isFull, Effect::isFullFromThenOn}) {
                if (effect >= Effect::isFull && call != Call::write) {
                    continue;
                }
                bool hasStruck = true;
                const int stride = call == Call::allocate && !isLong() ? 61 : 1;
                for (int number = 1; hasStruck; number += stride) {
                    const std::string where = operation.name + ", " + name + " " + std::to_string(number) +
                                              ", effect " + std::to_string(static_cast<int>(effect));
                    world.place(operation.startName, operation.start);
                    const std::ptrdiff_t descriptors = openDescriptors();
                    ASSERT_TRUE(operation.opening(world)) << where;
                    armFault({Fault::bit(call), number, effect});
                    const bool succeeded = operation.run(world);
                    hasStruck = disarmFault();
                    points += hasStruck ? 1 : 0;
                    ASSERT_TRUE(succeeded || hasStruck) << where << ": " << world.lastFailure;
                    // Every other time the store goes on as it is, as it does in an app that keeps running.
                    if (number % 2 == 0) {
                        const std::string state = operation.state(world);
                        ASSERT_THAT(operation.states, testing::Contains(state)) << where;
                        ASSERT_TRUE(!succeeded || state == operation.states.back()) << where << ": swallowed";
                        ASSERT_TRUE(operation.opening(world)) << where << ": " << world.lastFailure;
                    }
                    ASSERT_TRUE(operation.run(world)) << where << ": " << world.lastFailure;
                    ASSERT_EQ(operation.state(world), operation.states.back()) << where;
                    ASSERT_EQ(openDescriptors(), descriptors) << where;
                }
            }
            allPoints += points;
            if (points > 0) {
                counts += std::to_string(points) + " " + name + ", ";
            }
        }
        printFaults(operation.name + " with a failing call", allPoints,
                    counts + "an allowed state, the failure told, the next run right");
    }
}

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
    /// Whether it stands still; false when it has ended.
    bool waitForStop() const {
        int status = 0;
        return waitpid(process_, &status, WUNTRACED) == process_ && WIFSTOPPED(status);
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

TEST(StoreFaultTests, a_kill_at_each_call_leaves_an_allowed_state_that_the_next_run_completes) {
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

TEST(StoreFaultTests, a_kill_at_any_moment_leaves_what_one_of_the_transactions_has_left) {
    const TemporaryFolder folder;
    StoreWorld world(folder.path());
    const std::vector<std::string> states = statesOfRounds(world);
    std::mt19937 random(20190105);
    const std::size_t kills = faultCount(150, 4700);
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

TEST(StoreFaultTests, a_store_in_use_elsewhere_is_not_repaired_and_works_on) {
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

TEST(StoreFaultTests, a_repair_keeps_everybody_away_until_the_new_store_is_in_place) {
    const TemporaryFolder folder;
    StoreWorld world(folder.path());
    ASSERT_TRUE(world.open() && world.merge(world.oldList));
    const std::string sound = world.state();
    world.place(StoreWorld::storeName, "s" + world.bytes().substr(1));
    Child child("stopped repair", folder.path(), 0);
    ASSERT_TRUE(child.waitForStop()) << "before it renames the draft";
    EXPECT_FALSE(world.repair());
    EXPECT_EQ(world.lastFailure, "The notebook store is open elsewhere.");
    child.kill();
    EXPECT_TRUE(child.wait() && world.repair()) << world.lastFailure;
    EXPECT_EQ(world.state(), sound);
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
    if (what == "stopped repair") {
        armFault({Fault::bit(Call::rename), 1, Fault::Effect::stops});
        return world.repair() ? 0 : 1;
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
