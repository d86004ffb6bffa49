#include "Platform/Memory/MemoryPressureWatch.h"

#include "Platform/Memory/ControlGroup.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>

namespace teralune {
namespace {

namespace fs = std::filesystem;

using Watches = std::vector<MemoryPressureWatch>;

/// The kernel tells once per window of two seconds in which work waited this long in all. A process without
/// privileges may only ask for windows that are a multiple of two seconds. The kernel wants the final NUL.
constexpr std::string_view someTrigger("some 100000 2000000\0", 20);
constexpr std::string_view fullTrigger("full 100000 2000000\0", 20);

/// Nothing when the text is no Base64.
std::optional<std::string> base64Decoded(const std::string& text) {
    std::string bytes(text.size() / 4 * 3 + 3, '\0');
    const int length =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                        reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    if (length < 0)
        return std::nullopt;
    // The decoder counts the bytes that padding stands for as well.
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    bytes.resize(static_cast<std::size_t>(length) - padding);
    return bytes;
}

/// In one piece, because a second write is refused.
bool writeWhole(const FileDescriptor& descriptor, std::string_view bytes) {
    return ::write(descriptor.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

FileDescriptor openReadWrite(const fs::path& path) {
    return FileDescriptor(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
}

FileDescriptor connectTo(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return {};
    std::memcpy(address.sun_path, path.data(), path.size());
    FileDescriptor descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (descriptor &&
        ::connect(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return {};
    return descriptor;
}

/// The service manager names a pressure file of the kernel, a pipe or a socket, and what to write into it.
Watches openNamed(const std::string& path, const std::string& encodedTrigger) {
    struct stat description {};
    const std::optional<std::string> trigger = base64Decoded(encodedTrigger);
    if (!trigger || !path.starts_with('/') || ::stat(path.c_str(), &description) != 0)
        return {};
    MemoryPressureWatch watch;
    watch.discardsInput = S_ISFIFO(description.st_mode) || S_ISSOCK(description.st_mode);
    watch.events = watch.discardsInput ? POLLIN : POLLPRI;
    // Only a trigger of the kernel's says how bad it is; anything else says that there is pressure.
    watch.level = trigger->starts_with("full") ? MemoryPressureLevel::critical : MemoryPressureLevel::warning;
    // A pipe that is open for writing here as well does not end whenever a writer goes.
    watch.descriptor = S_ISSOCK(description.st_mode) ? connectTo(path) : openReadWrite(path);
    Watches watches;
    if (watch.descriptor && (trigger->empty() || writeWhole(watch.descriptor, *trigger)))
        watches.push_back(std::move(watch));
    return watches;
}

/// One open file for each level, since each takes one trigger.
Watches openPressureFile(const fs::path& path) {
    Watches watches;
    for (const MemoryPressureLevel level : {MemoryPressureLevel::warning, MemoryPressureLevel::critical}) {
        MemoryPressureWatch watch{openReadWrite(path), POLLPRI, false, level};
        const bool isCritical = level == MemoryPressureLevel::critical;
        if (watch.descriptor && writeWhole(watch.descriptor, isCritical ? fullTrigger : someTrigger))
            watches.push_back(std::move(watch));
    }
    return watches;
}

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

std::optional<std::string> MemoryPressureSurroundings::processEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

bool MemoryPressureWatch::discardInput() const {
    // What does not fit makes the file ready again.
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(descriptor.get(), buffer.data(), buffer.size());
    return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

std::vector<MemoryPressureWatch>
MemoryPressureWatch::openAll(const MemoryPressureSurroundings& surroundings) {
    if (const auto path = surroundings.environment("MEMORY_PRESSURE_WATCH"); path && !path->empty()) {
        if (*path == "/dev/null")
            return {};
        Watches watches = openNamed(*path, surroundings.environment("MEMORY_PRESSURE_WRITE").value_or(""));
        if (!watches.empty())
            return watches;
    }
    const fs::path& root = surroundings.rootFolder;
    if (const auto group = controlGroupFolder(contentOf(root / "proc/self/cgroup"),
                                              contentOf(root / "proc/self/mountinfo"))) {
        Watches watches = openPressureFile(root / group->relative_path() / "memory.pressure");
        if (!watches.empty())
            return watches;
    }
    return openPressureFile(root / "proc/pressure/memory");
}

} // namespace teralune
