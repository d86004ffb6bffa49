#include "Platform/Dispatch/CountingSemaphore.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Memory/ControlGroup.h"
#include "Platform/Memory/MemoryPressureSource.h"
#include "Platform/Memory/MemoryPressureTracker.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <array>
#include <map>

namespace teralune {
namespace {

using Level = MemoryPressureLevel;
using namespace std::string_literals;

TEST(ControlGroup, is_found_where_the_mount_table_says) {
    const std::string unified = "29 23 0:26 / /sys/fs/cgroup rw shared:4 - cgroup2 cgroup2 rw\n";
    const std::string hybrid = "35 31 0:32 / /sys/fs/cgroup/memory rw - cgroup cgroup rw,memory\n"
                               "41 31 0:38 / /sys/fs/cgroup/unified rw - cgroup2 cgroup2 rw\n";
    const std::string container = "29 23 0:26 /box/7 /sys/fs/c\\040group rw - cgroup2 none rw\n";
    const std::tuple<std::string, std::string, std::optional<std::filesystem::path>> cases[] = {
        {"0::/user.slice/a.scope\n", unified, "/sys/fs/cgroup/user.slice/a.scope"},
        {"4:memory:/x\n0::/a\n", hybrid, "/sys/fs/cgroup/unified/a"},
        {"0::/box/7/app\n", container, "/sys/fs/c group/app"},
        {"0::/box/8\n", container, std::nullopt},
        {"0::/../other\n", unified, std::nullopt},
        {"4:memory:/x\n", unified, std::nullopt},
        {"0::/a\n", "41 31 - cgroup2\n\nnonsense", std::nullopt},
    };
    for (const auto& [groups, mounts, expected] : cases)
        EXPECT_TRUE(controlGroupFolder(groups, mounts) == expected) << groups << mounts;
}

TEST(MemoryPressureTracker, tells_each_change_once_and_the_end_after_a_quiet_period) {
    using std::chrono::seconds;
    MemoryPressureTracker tracker(seconds(10));
    const MemoryPressureTracker::TimePoint start{};
    const std::tuple<int, std::optional<Level>, std::optional<Level>, int> moments[] = {
        {1, Level::warning, Level::warning, 11},   {3, Level::warning, std::nullopt, 13},
        {5, Level::critical, Level::critical, 15}, {9, Level::warning, std::nullopt, 15},
        {14, std::nullopt, std::nullopt, 15},      {15, std::nullopt, Level::warning, 19},
        {19, std::nullopt, Level::normal, -1},     {30, Level::critical, Level::critical, 40},
    };
    for (const auto& [second, signal, change, next] : moments) {
        if (signal)
            tracker.signalled(*signal, start + seconds(second));
        EXPECT_EQ(tracker.takeChange(start + seconds(second)), change) << second;
        EXPECT_TRUE(tracker.nextChange().value_or(start - seconds(1)) == start + seconds(next)) << second;
    }
}

/// A tree that stands for the system's, and the environment of a process in it.
struct FakeSystem {
    TemporaryFolder root;
    std::map<std::string, std::string> variables;

    MemoryPressureSurroundings surroundings() const {
        return {root.path(), [this](const char* name) {
                    const auto found = variables.find(name);
                    return found == variables.end() ? std::nullopt : std::optional(found->second);
                }};
    }
    std::vector<MemoryPressureWatch> open() const { return MemoryPressureWatch::openAll(surroundings()); }
    /// A pipe, which keeps what is written into it; open for the test.
    FileDescriptor pipe(const std::string& name) const {
        const std::filesystem::path path = root.write(name, "");
        std::filesystem::remove(path);
        EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
        return FileDescriptor(::open(path.c_str(), O_RDWR | O_NONBLOCK));
    }
};

std::string contentOf(const FileDescriptor& file) {
    std::array<char, 256> buffer{};
    const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

const std::string bothTriggers = "some 100000 2000000\0full 100000 2000000\0"s;

TEST(MemoryPressureWatch, asks_the_control_group_and_else_the_whole_system_for_both_levels) {
    FakeSystem system;
    system.root.write("proc/self/cgroup", "0::/app\n");
    system.root.write("proc/self/mountinfo", "29 23 0:26 / /groups rw - cgroup2 cgroup2 rw\n");
    EXPECT_TRUE(system.open().empty());
    const FileDescriptor whole = system.pipe("proc/pressure/memory");
    const auto watches = system.open();
    ASSERT_EQ(watches.size(), 2U);
    EXPECT_EQ(std::tie(watches[0].level, watches[1].level), std::make_tuple(Level::warning, Level::critical));
    EXPECT_EQ(contentOf(whole), bothTriggers);
    const FileDescriptor group = system.pipe("groups/app/memory.pressure");
    EXPECT_EQ(system.open().size(), 2U);
    EXPECT_EQ(contentOf(group), bothTriggers);
    EXPECT_EQ(contentOf(whole), "");
}

TEST(MemoryPressureWatch, does_what_the_service_manager_says_where_that_can_be_done) {
    FakeSystem system;
    const FileDescriptor whole = system.pipe("proc/pressure/memory");
    const std::string file = system.root.path() / "named";
    // The two variables; what is written into the file, how many watches there are and of which first level.
    const std::tuple<std::string, std::string, std::string, std::size_t, Level> cases[] = {
        {file, "c29tZSAxMDAwMDAgMjAwMDAwMAA=", "some 100000 2000000\0"s, 1, Level::warning},
        {file, "ZnVsbCAxIDI=", "full 1 2", 1, Level::critical},
        {file, "", "", 1, Level::warning},
        {"/dev/null", "", "", 0, Level::normal},
        {file, "no Base64!", "", 2, Level::warning},
        {"named", "", "", 2, Level::warning},
        {file + "less", "", "", 2, Level::warning},
    };
    for (const auto& [watch, write, written, count, level] : cases) {
        SCOPED_TRACE(watch + " " + write);
        system.root.write("named", "");
        system.variables = {{"MEMORY_PRESSURE_WATCH", watch}, {"MEMORY_PRESSURE_WRITE", write}};
        const auto watches = system.open();
        ASSERT_EQ(watches.size(), count);
        EXPECT_EQ(watches.empty() ? Level::normal : watches.front().level, level);
        EXPECT_EQ(contentOf(FileDescriptor(::open(file.c_str(), O_RDONLY))), written);
        EXPECT_EQ(contentOf(whole), count == 2 ? bothTriggers : "");
    }
}

/// A source on a queue that the test drains, and what it has told.
struct Watched {
    explicit Watched(const FakeSystem& system)
        : source(std::in_place, queue, system.surroundings(), std::chrono::milliseconds(1)) {
        source->setEventHandler([this](Level level) { levels.push_back(level); });
        source->resume();
    }
    /// Whether a warning and then its end are told.
    bool tellsOfPressure() {
        levels.clear();
        queue->runUntil([this] { return levels.size() == 2; }, std::chrono::seconds(20));
        return levels == std::vector{Level::warning, Level::normal};
    }

    std::shared_ptr<MainQueue> queue = std::make_shared<MainQueue>();
    std::vector<Level> levels;
    std::optional<MemoryPressureSource> source;
};

TEST(MemoryPressureSource, tells_of_pressure_and_of_its_end_until_it_is_dropped) {
    FakeSystem system;
    const FileDescriptor pipe = system.pipe("named");
    system.variables = {{"MEMORY_PRESSURE_WATCH", system.root.path() / "named"}};
    Watched watched(system);
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(::write(pipe.get(), "pressure", 8), 8);
        EXPECT_TRUE(watched.tellsOfPressure()) << round;
    }
    CountingSemaphore posted(0);
    watched.queue->setWakeHandler([&] { posted.signal(); });
    ASSERT_EQ(::write(pipe.get(), "pressure", 8), 8);
    posted.wait();
    watched.source.reset();
    watched.levels.clear();
    watched.queue->drain();
    EXPECT_TRUE(watched.levels.empty());
}

TEST(MemoryPressureSource, listens_to_a_socket_until_the_other_side_goes) {
    FakeSystem system;
    const std::string path = system.root.path() / "manager";
    sockaddr_un address{AF_UNIX, {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(listener.get(), 1), 0);
    system.variables = {{"MEMORY_PRESSURE_WATCH", path}, {"MEMORY_PRESSURE_WRITE", "aGVsbG8="}};
    Watched watched(system);
    FileDescriptor manager(::accept(listener.get(), nullptr, nullptr));
    EXPECT_EQ(contentOf(manager), "hello");
    ASSERT_EQ(::write(manager.get(), "!", 1), 1);
    EXPECT_TRUE(watched.tellsOfPressure());
    manager = FileDescriptor();
    EXPECT_FALSE(watched.queue->drain());
}

} // namespace
} // namespace teralune
