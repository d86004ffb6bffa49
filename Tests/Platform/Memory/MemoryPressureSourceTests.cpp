#include "Platform/Memory/MemoryPressureSource.h"

#include "Platform/Dispatch/CountingSemaphore.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <array>
#include <cstring>
#include <fstream>
#include <map>

namespace teralune {
namespace {

using Level = MemoryPressureLevel;
using namespace std::string_literals;

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
    /// A pipe, which keeps what is written into it; open for the test.
    FileDescriptor pipe(const std::string& name) const {
        const std::filesystem::path path = root.path() / name;
        std::filesystem::create_directories(path.parent_path());
        EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
        return FileDescriptor(::open(path.c_str(), O_RDWR | O_NONBLOCK));
    }
    std::vector<MemoryPressureWatch> open() const { return MemoryPressureWatch::openAll(surroundings()); }
};

std::string contentOf(const FileDescriptor& pipe) {
    std::array<char, 256> buffer{};
    const ssize_t count = ::read(pipe.get(), buffer.data(), buffer.size());
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

const std::string bothTriggers = "some 100000 2000000\0full 100000 2000000\0"s;

TEST(MemoryPressureWatch, asks_the_control_group_and_else_the_whole_system_for_both_levels) {
    FakeSystem system;
    system.root.write("proc/self/cgroup", "0::/app\n");
    system.root.write("proc/self/mountinfo", "29 23 0:26 / /groups rw - cgroup2 cgroup2 rw\n");
    EXPECT_TRUE(system.open().empty());
    const FileDescriptor whole = system.pipe("proc/pressure/memory");
    EXPECT_EQ(system.open().size(), 2U);
    EXPECT_EQ(contentOf(whole), bothTriggers);

    const FileDescriptor group = system.pipe("groups/app/memory.pressure");
    const auto watches = system.open();
    ASSERT_EQ(watches.size(), 2U);
    EXPECT_EQ(watches[0].level, Level::warning);
    EXPECT_EQ(watches[1].level, Level::critical);
    EXPECT_EQ(watches[1].events, POLLPRI);
    EXPECT_FALSE(watches[1].discardsInput);
    EXPECT_EQ(contentOf(group), bothTriggers);
    EXPECT_EQ(contentOf(whole), "");
}

TEST(MemoryPressureWatch, does_what_the_service_manager_says_where_that_can_be_done) {
    struct Case {
        const char* name;
        std::string watch;
        std::optional<std::string> write;
        std::string writtenToFile;
        std::optional<Level> level; ///< none: nothing is watched
        std::string writtenToSystem;
    };
    FakeSystem system;
    const FileDescriptor whole = system.pipe("proc/pressure/memory");
    const std::string file = system.root.path() / "named";
    const Case cases[] = {
        {"some, with its NUL", file, "c29tZSAxMDAwMDAgMjAwMDAwMAA=", "some 100000 2000000\0"s, Level::warning,
         ""},
        {"full, without one", file, "ZnVsbCAxIDI=", "full 1 2", Level::critical, ""},
        {"nothing to write", file, std::nullopt, "", Level::warning, ""},
        {"switched off", "/dev/null", std::nullopt, "", std::nullopt, ""},
        {"no Base64", file, "!", "", Level::warning, bothTriggers},
        {"a relative path", "named", std::nullopt, "", Level::warning, bothTriggers},
        {"no such file", file + "less", std::nullopt, "", Level::warning, bothTriggers},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        system.root.write("named", "");
        system.variables = {{"MEMORY_PRESSURE_WATCH", each.watch}};
        if (each.write)
            system.variables["MEMORY_PRESSURE_WRITE"] = *each.write;
        const auto watches = system.open();
        ASSERT_EQ(watches.empty(), !each.level);
        if (each.level) {
            EXPECT_EQ(watches.front().level, *each.level);
            EXPECT_EQ(watches.front().events, POLLPRI);
        }
        std::ifstream written(file, std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), {}), each.writtenToFile);
        EXPECT_EQ(contentOf(whole), each.writtenToSystem);
    }
}

/// A source on a queue that the test drains, and what it has told.
struct Watched {
    explicit Watched(const FakeSystem& system)
        : source(std::in_place, queue, system.surroundings(), std::chrono::milliseconds(1)) {
        source->setEventHandler([this](Level level) { levels.push_back(level); });
        source->resume();
    }
    bool tells(const std::vector<Level>& expected) {
        return queue->runUntil([&] { return levels.size() >= expected.size(); }, std::chrono::seconds(20)) &&
               levels == expected;
    }

    std::shared_ptr<MainQueue> queue = std::make_shared<MainQueue>();
    std::vector<Level> levels;
    std::optional<MemoryPressureSource> source;
};

TEST(MemoryPressureSource, tells_of_pressure_and_of_its_end_on_its_queue) {
    FakeSystem system;
    const FileDescriptor pipe = system.pipe("named");
    system.variables = {{"MEMORY_PRESSURE_WATCH", system.root.path() / "named"}};
    Watched watched(system);
    for (std::size_t round = 1; round <= 2; ++round) {
        ASSERT_EQ(::write(pipe.get(), "pressure", 8), 8);
        std::vector<Level> expected;
        for (std::size_t i = 0; i < round; ++i)
            expected.insert(expected.end(), {Level::warning, Level::normal});
        EXPECT_TRUE(watched.tells(expected)) << round;
    }

    CountingSemaphore posted(0);
    watched.queue->setWakeHandler([&] { posted.signal(); });
    ASSERT_EQ(::write(pipe.get(), "pressure", 8), 8);
    posted.wait();
    watched.source.reset();
    watched.queue->drain();
    EXPECT_EQ(watched.levels.size(), 4U) << "told after it was dropped";
}

TEST(MemoryPressureSource, listens_to_a_socket_until_the_other_side_goes) {
    FakeSystem system;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = system.root.path() / "manager";
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, path.c_str());
    const FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(listener.get(), 1), 0);
    system.variables = {{"MEMORY_PRESSURE_WATCH", path}, {"MEMORY_PRESSURE_WRITE", "aGVsbG8="}};
    Watched watched(system);
    FileDescriptor manager(::accept(listener.get(), nullptr, nullptr));
    EXPECT_EQ(contentOf(manager), "hello");
    ASSERT_EQ(::write(manager.get(), "!", 1), 1);
    EXPECT_TRUE(watched.tells({Level::warning, Level::normal}));
    manager = FileDescriptor();
    EXPECT_FALSE(watched.queue->drain());
}

TEST(MemoryPressureSource, lets_its_handler_go_where_there_is_nothing_to_watch) {
    const FakeSystem system;
    const auto held = std::make_shared<int>(0);
    const auto source =
        std::make_shared<MemoryPressureSource>(std::make_shared<MainQueue>(), system.surroundings());
    source->setEventHandler([held, source](Level) {});
    source->resume();
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
} // namespace teralune
