#include "Platform/Database/PrivateFile.h"

#include "Platform/Database/DatabaseError.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace teralune {
namespace {

constexpr mode_t ownerOnlyFolder = 0700;
constexpr mode_t ownerOnlyFile = 0600;

Error systemError(int code, const std::filesystem::path& path) {
    return {std::string(databaseErrorDomain),
            code,
            path.string() + ": " + std::generic_category().message(code),
            {}};
}

Result<void> makePrivateFolder(const std::filesystem::path& folder) {
    if (folder.empty() || mkdir(folder.c_str(), ownerOnlyFolder) == 0 || errno == EEXIST) {
        return {};
    }
    if (errno != ENOENT) {
        return systemError(errno, folder);
    }
    if (Result<void> parent = makePrivateFolder(folder.parent_path()); !parent) {
        return parent;
    }
    if (mkdir(folder.c_str(), ownerOnlyFolder) != 0 && errno != EEXIST) {
        return systemError(errno, folder);
    }
    return {};
}

} // namespace

Result<void> makePrivateFile(const std::filesystem::path& file) {
    if (Result<void> folder = makePrivateFolder(file.parent_path()); !folder) {
        return folder;
    }
    const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, ownerOnlyFile);
    if (descriptor < 0) {
        return systemError(errno, file);
    }
    const int modeChange = fchmod(descriptor, ownerOnlyFile);
    const int modeError = errno;
    close(descriptor);
    if (modeChange != 0) {
        return systemError(modeError, file);
    }
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        std::filesystem::path companion = file;
        companion += suffix;
        std::error_code missing;
        std::filesystem::permissions(
            companion, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write, missing);
    }
    return {};
}

} // namespace teralune
