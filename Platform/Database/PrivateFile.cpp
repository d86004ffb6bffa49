#include "Platform/Database/PrivateFile.h"

#include "Platform/Database/DatabaseError.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace teralune {
namespace {

constexpr mode_t ownerOnlyFolder = 0700;
constexpr mode_t ownerOnlyFile = 0600;

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

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }

private:
    int number_;
};

/// Closing a descriptor of a file drops every lock that the process holds on it, those of an open connection
/// included. A descriptor that is only a name (O_PATH) opens nothing and so drops none.
Result<void> restrictToOwner(const std::filesystem::path& file) {
    const Descriptor name(open(file.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (name.number() < 0 || fstat(name.number(), &status) != 0) {
        return systemError(errno, file);
    }
    if (!S_ISREG(status.st_mode)) {
        return systemError(S_ISLNK(status.st_mode) ? ELOOP : S_ISDIR(status.st_mode) ? EISDIR : EINVAL, file);
    }
    if ((status.st_mode & ALLPERMS) == ownerOnlyFile) {
        return {};
    }
    const std::string alias = "/proc/self/fd/" + std::to_string(name.number());
    if (chmod(alias.c_str(), ownerOnlyFile) != 0) {
        return systemError(errno, file);
    }
    return {};
}

} // namespace

Result<void> makePrivateFile(const std::filesystem::path& file) {
    if (Result<void> folder = makePrivateFolder(file.parent_path()); !folder) {
        return folder;
    }
    {
        const Descriptor made(open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, ownerOnlyFile));
        if (made.number() < 0 && errno != EEXIST) {
            return systemError(errno, file);
        }
    }
    if (Result<void> restricted = restrictToOwner(file); !restricted) {
        return restricted;
    }
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        std::filesystem::path companion = file;
        companion += suffix;
        // Most are missing.
        static_cast<void>(restrictToOwner(companion));
    }
    return {};
}

} // namespace teralune
