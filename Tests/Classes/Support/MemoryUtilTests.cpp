#include "Classes/Support/MemoryUtil.h"

#include "Platform/Foundation/FileDescriptor.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

namespace teralune {
namespace {

using Lines = std::vector<std::string>;

TEST(MemoryUtil, logs_memory_pressure_in_debug_mode_only) {
    const TemporaryFolder folder;
    const std::string path = folder.path() / "pressure";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const FileDescriptor pipe(::open(path.c_str(), O_RDWR | O_NONBLOCK));
    ASSERT_EQ(::write(pipe.get(), "!", 1), 1);
    ::setenv("MEMORY_PRESSURE_WATCH", path.c_str(), 1);
    // The monitor stays for as long as the process does, and so has the application.
    static FakeApplication& application = *new FakeApplication;

    MemoryUtil::installMemoryWarning(application, application.constants);
    EXPECT_EQ(application.recordingCrashReporter.lines(), Lines());

    application.constants.isDebug = true;
    MemoryUtil::installMemoryWarning(application, application.constants);
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (application.recordingCrashReporter.lines().size() < 2 && std::chrono::steady_clock::now() < limit)
        std::this_thread::yield();
    ::unsetenv("MEMORY_PRESSURE_WATCH");
    // The event may come before the line that announces the monitor.
    Lines lines = application.recordingCrashReporter.takeLines();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{"Installed memory warning", "Memory warning: level warning"}));
}

} // namespace
} // namespace teralune
