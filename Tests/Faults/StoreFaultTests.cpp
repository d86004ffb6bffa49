#include "Platform/Foundation/FileDescriptor.h"
#include "Tests/Faults/FaultCounts.h"
#include "Tests/Faults/FaultInjection.h"
#include "Tests/Faults/StoreWorld.h"

#include <array>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <random>
#include <set>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

namespace teralune {
namespace {

using Effect = Fault::Effect;

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
    /// The faults that it is spared, and those that alone it is made for.
    std::string_view spared = {};
    std::string_view only = {};
};

/// A state and the file that holds it.
struct Scene {
    std::string state;
    std::string identifiers;
    std::string bytes;
};

/// What comes of that file, or of none, when this is done with it.
Scene scene(StoreWorld& world, const std::string& start, const std::function<void(StoreWorld&)>& what) {
    world.place(start.empty() ? "" : StoreWorld::storeName, start);
    world.open();
    what(world);
    std::string state = world.state();
    return {std::move(state), world.state(true), world.bytes()};
}

/// Each operation that touches the disk.
std::vector<Operation> storeOperations(StoreWorld& made) {
    using World = StoreWorld&;
    const auto open = &StoreWorld::open;
    const auto keepSteps = &StoreWorld::keepSteps;
    const auto merge = [](World world) { return world.merge(world.newList); };
    const auto nothing = [](World) { return true; };
    const auto notes = [](World world) { return world.state(); };
    const auto setting = [](World world) { return std::to_string(world.setting()); };
    const Scene old = scene(made, "", [](World world) { world.merge(world.oldList); });
    const Scene cached = scene(made, old.bytes, keepSteps);
    const Scene both =
        scene(made, cached.bytes, [](World world) { world.mergeWithoutRemoving(world.newList); });
    const Scene all = scene(made, cached.bytes, merge);
    const Scene tagged = scene(made, cached.bytes, &StoreWorld::addTag);
    const Scene untagged = scene(
        made, cached.bytes, [](World world) { return world.query(), world.execute("DELETE FROM links"); });
    const std::string listed = made.listed;
    const Scene damaged = scene(made, cached.bytes, [](World world) {
        world.execute("DROP INDEX entriesByProblem; CREATE TABLE planted(id)");
    });
    const std::string version1 = TemporaryFolder::read(TERALUNE_TEST_VERSION1);
    const Scene migrated = scene(made, version1, nothing);
    made.place();
    made.openSettings() && made.set(1) && made.close();
    const std::string settings = TemporaryFolder::read(made.settingsFile);
    const char* const store = StoreWorld::storeName;
    // clang-format off
    return {
        {"first open", "", "", nothing, open, notes, {""}},
        {"open", store, cached.bytes, nothing, open, notes, {cached.state}},
        {"migration", store, version1, nothing, open, notes, {migrated.state}},
        {"merge", store, cached.bytes, open, merge, notes, {cached.state, both.state, all.state}},
        {"query", store, cached.bytes, open, &StoreWorld::query,
         [](World world) { return world.close(), world.listed; }, {"", "failed", listed}},
        {"steps", store, old.bytes, open, keepSteps, notes, {old.state, cached.state}},
        {"tag", store, cached.bytes, open, &StoreWorld::addTag, notes, {cached.state, tagged.state}},
        {"sign-out", store, cached.bytes, open, &StoreWorld::clear, notes, {cached.state, untagged.state, ""}},
        {"close", store, cached.bytes, [](World world) { return world.open() && world.merge(world.newList); },
         &StoreWorld::close, notes, {all.state}},
        {"repair", store, damaged.bytes, nothing, &StoreWorld::repair, notes, {cached.state}, "reads"},
        // What can't be read a repair does without, and the next list brings it back.
        {"repair and list", store, damaged.bytes, nothing,
         [](World world) { return world.close() && world.repair() && world.open() && world.merge(world.newList); },
         [](World world) { return world.state(true); }, {"", cached.identifiers, both.identifiers, all.identifiers}, {}, "reads"},
        {"first settings", "", "", nothing, [](World world) { return world.openSettings() && world.set(2); }, setting, {"0", "2"}},
        {"settings", StoreWorld::settingsName, settings, &StoreWorld::openSettings, [](World world) { return world.set(2); }, setting, {"1", "2"}},
    };
    // clang-format on
}

/// A process of its own that does this and may be killed meanwhile.
class Child {
public:
    /// The work is given a descriptor to which it writes a byte for each round that it has done.
    explicit Child(const std::function<bool(int)>& work) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0 || (process_ = fork()) < 0) {
            throw std::runtime_error("no child");
        }
        if (process_ == 0) {
            [&]() noexcept { _exit(work(ends[1]) ? 0 : 1); }();
        }
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
    bool kill() { return ::kill(process_, SIGKILL) == 0 && wait(); }
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

constexpr std::uint32_t changingCalls =
    ~(Fault::bit(Call::read) | Fault::bit(Call::allocate) | Fault::bit(Call::makeObject));

/// What can go wrong, in which ways, whether once and from then on, and every which point the short form
/// takes.
const struct {
    const char* name;
    std::uint32_t calls;
    std::vector<Effect> effects = {Effect::fails};
    std::vector<bool> lasting = {false, true};
    int stride = 1;
} faults[] = {
    {"reads", Fault::bit(Call::read)},
    {"writes", Fault::bit(Call::write), {Effect::fails, Effect::isFull}},
    {"syncs", Fault::bit(Call::sync)},
    {"truncations", Fault::bit(Call::truncate)},
    {"openings", Fault::bit(Call::open)},
    {"removals", Fault::bit(Call::remove)},
    {"mappings", Fault::bit(Call::map)},
    {"renamings", Fault::bit(Call::rename)},
    {.name = "allocations of SQLite's", .calls = Fault::bit(Call::allocate), .stride = 61},
    {.name = "allocations of C++'s", .calls = Fault::bit(Call::makeObject), .stride = 7},
    {"sizes of a disk", 0, {Effect::fillsDisk}, {false}},
    {"limits of a file", 0, {Effect::limitsFiles}, {false}},
    {"kills", changingCalls, {Effect::kills}, {false}, 2},
};

/// Of the process, while no store is open: descriptors, bytes of SQLite's, pieces of C++'s memory.
std::array<std::int64_t, 3> resources() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return {std::distance(begin(descriptors), end(descriptors)), sqlite3_memory_used(), livingObjects()};
}

class StoreFaultTests : public testing::Test {
protected:
    /// Does the operation under the fault, and checks all that must hold.
    void attack(const Operation& operation, const Fault& fault) {
        world.place(operation.startName, operation.start);
        const std::array<std::int64_t, 3> before = resources();
        bool succeeded = false;
        const auto runUnderFault = [&] {
            const bool opened = operation.opening(world);
            armFault(fault, folder.path());
            return opened && operation.run(world);
        };
        if (fault.effect == Effect::kills) {
            hasStruck = Child([&](int) { return runUnderFault() && world.close(); }).wait();
        } else {
            succeeded = runUnderFault();
            hasStruck = disarmFault();
            ASSERT_TRUE(succeeded || hasStruck) << world.lastFailure;
        }
        // Every other time the store goes on as it is, as it does in an app that keeps running.
        if (fault.effect == Effect::kills || fault.number % 2 == 0) {
            const std::string state = operation.state(world);
            ASSERT_THAT(operation.states, testing::Contains(state));
            ASSERT_TRUE(!succeeded || state == operation.states.back()) << "swallowed";
            ASSERT_TRUE(operation.opening(world)) << world.lastFailure;
        }
        ASSERT_TRUE(operation.run(world)) << world.lastFailure;
        ASSERT_EQ(operation.state(world), operation.states.back());
        world.place();
        ASSERT_EQ(resources(), before) << "descriptors, SQLite's memory, C++'s";
    }

    const TemporaryFolder folder;
    StoreWorld world{folder.path()};
    bool hasStruck = false;
};

/// For each kind of fault.
class StoreFaultSweeps : public StoreFaultTests, public testing::WithParamInterface<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(, StoreFaultSweeps, testing::Range<std::size_t>(0, std::size(faults)));

TEST_P(StoreFaultSweeps, is_reported_and_leaves_a_state_that_the_next_run_mends) {
    const auto& [name, calls, effects, lasting, stride] = faults[GetParam()];
    std::string counts;
    std::size_t allPoints = 0;
    for (const Operation& operation : storeOperations(world)) {
        if (name == operation.spared || (!operation.only.empty() && name != operation.only)) {
            continue;
        }
        attack(operation, {}); // so that what is made once is there
        std::size_t points = 0;
        for (const Effect effect : effects) {
            for (const bool lasts : lasting) {
                hasStruck = true;
                for (int number = 1; hasStruck; number += isLong() ? 1 : stride) {
                    SCOPED_TRACE(operation.name + ", " + name + " " + std::to_string(number) +
                                 (effect == Effect::isFull ? ", full" : "") + (lasts ? ", lasting" : ""));
                    ASSERT_NO_FATAL_FAILURE(attack(operation, {calls, number, effect, lasts}));
                    points += hasStruck ? 1 : 0;
                }
            }
        }
        allPoints += points;
        counts += points > 0 ? std::to_string(points) + " in " + operation.name + ", " : "";
    }
    EXPECT_GT(allPoints, 0U);
    printFaults(name, allPoints, counts + "an allowed state, the failure told, the next run right, no leak");
}

TEST(StoreMemoryTests, a_controller_that_gets_no_memory_ends_the_library_with_its_message) {
    const TemporaryFolder folder;
    std::size_t ends = 0;
    for (const bool lasts : {false, true}) {
        bool hasStruck = true;
        for (int number = 1; hasStruck; number += isLong() ? 1 : 7) {
            const Fault fault{Fault::bit(Call::makeObject), number, Effect::fails, lasts};
            const auto hasEnded = [&](int status) {
                hasStruck = !WIFEXITED(status) || WEXITSTATUS(status) != 0;
                ends += WIFSIGNALED(status) ? 1 : 0;
                return WIFEXITED(status) || WTERMSIG(status) == SIGABRT;
            };
            EXPECT_EXIT((openAsTheLibraryDoes(folder.path(), fault), std::fputs("opened", stderr),
                         std::_Exit(disarmFault() ? 1 : 0)),
                        hasEnded, "Fatal error: Error (migrating store|initializing mom from): .|opened")
                << number;
            ASSERT_EQ(StoreWorld(folder.path()).state(), "") << number;
        }
    }
    printFaults("controller without an allocation of C++'s", ends, "fatal message, the next one opens");
}

/// Rounds without end, from nothing on.
Child rounds(StoreWorld& world) {
    return Child([&world](int ended) {
        bool goesOn = world.open() && world.openSettings();
        for (std::int64_t round = 1; goesOn; ++round) {
            goesOn = world.set(round) && world.merge(world.listOfRound(round)) && world.keepSteps() &&
                     write(ended, ".", 1) == 1;
        }
        return false;
    });
}

TEST_F(StoreFaultTests, a_kill_at_any_moment_leaves_what_one_of_the_transactions_has_left) {
    // Between any two transactions of the first rounds. Later rounds repeat them.
    std::vector<std::string> states{""};
    for (int part = 0; part < 12; ++part) {
        const std::string& list = world.listOfRound(part / 3 + 1);
        world.open();
        part % 3 == 0   ? world.mergeWithoutRemoving(list)
        : part % 3 == 1 ? world.merge(list)
                        : world.keepSteps();
        states.push_back(world.state());
    }
    std::mt19937 random(20190105);
    const std::size_t kills = faultCount(150, 4700);
    std::set<std::string> seen;
    for (std::size_t number = 0; number < kills; ++number) {
        world.place();
        Child child = rounds(world);
        for (std::uint_fast32_t round = random() % 4; round > 0; --round) {
            child.waitForRound();
        }
        for (std::atomic<std::uint_fast32_t> turns = random() % 2'000'000; turns > 0; --turns) {
        }
        ASSERT_TRUE(child.kill());
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

TEST_F(StoreFaultTests, a_store_in_use_elsewhere_works_on_and_is_not_repaired_nor_opened_amid_a_repair) {
    const auto isRefused = [this] {
        return !world.repair() && world.lastFailure == "The notebook store is open elsewhere.";
    };
    Child user = rounds(world);
    ASSERT_TRUE(user.waitForRound());
    EXPECT_TRUE(isRefused());
    ASSERT_TRUE(world.open()) << world.lastFailure;
    EXPECT_TRUE(world.query() && world.merge(world.newList)) << "one waits for the other";
    ASSERT_TRUE(user.waitForRound());
    EXPECT_TRUE(user.kill());
    EXPECT_TRUE(world.query() && world.merge(world.oldList));
    const std::string sound = world.state();
    world.place(StoreWorld::storeName, "s" + world.bytes().substr(1));
    Child repairer([this](int) {
        armFault({Fault::bit(Call::rename), 1, Effect::stops});
        return world.repair();
    });
    ASSERT_TRUE(repairer.waitForStop()) << "before it renames the draft";
    EXPECT_TRUE(isRefused());
    EXPECT_TRUE(repairer.kill() && world.repair()) << world.lastFailure;
    EXPECT_EQ(world.state(), sound);
}

} // namespace
} // namespace teralune

int main(int argc, char** argv) {
    teralune::installFaults();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
