#include "Platform/Database/FileReplacement.h"

#include "Platform/Database/DatabaseError.h"
#include "Platform/Foundation/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace teralune {
namespace {

using std::filesystem::path;

/// The file itself goes last, since its name decides on the number.
constexpr const char* parts[] = {"-wal", "-shm", "-journal", ""};

// Names are put together as texts: a path that is changed in place while memory runs out can end the process
// inside the standard library.
path withSuffix(const path& file, const char* suffix) {
    return file.native() + suffix;
}

path numbered(const path& file, int number) {
    std::string name = file.native();
    name.insert(name.size() - file.extension().native().size(), ".damaged-" + std::to_string(number));
    return name;
}

bool isThere(const path& file) {
    struct stat status {};
    return lstat(file.c_str(), &status) == 0;
}

/// The first number that is free for all that is still to be moved. Of a move that was interrupted this is
/// the one that it had begun with.
int freeNumber(const path& file) {
    for (int number = 1;; ++number) {
        const path name = numbered(file, number);
        const bool isTaken = std::any_of(std::begin(parts), std::end(parts), [&](const char* part) {
            return isThere(withSuffix(name, part)) && (*part == '\0' || isThere(withSuffix(file, part)));
        });
        if (!isTaken) {
            return number;
        }
    }
}

Result<void> renameTo(const path& from, const path& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return {};
    }
    // Not every file system knows that flag.
    const bool isUnknown = errno == EINVAL || errno == ENOSYS;
    if (isUnknown && !isThere(to) && rename(from.c_str(), to.c_str()) == 0) {
        return {};
    }
    return systemError(errno, from);
}

Result<void> syncFolderOf(const path& file) {
    const path folder = file.has_parent_path() ? file.parent_path() : path(".");
    const FileDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor || fsync(descriptor.get()) != 0) {
        return systemError(errno, folder);
    }
    return {};
}

/// Only for the holder of the new file's lock.
Result<path> moveIntoPlace(const path& file, const path& whole) {
    const int number = freeNumber(file);
    // A move that was interrupted at its end has nothing left to move.
    const path aside = numbered(file, isThere(file) || number == 1 ? number : number - 1);
    for (const char* part : parts) {
        if (const path from = withSuffix(file, part); isThere(from)) {
            if (Result<void> moved = renameTo(from, withSuffix(aside, part)); !moved) {
                return moved.error();
            }
        }
    }
    Result<void> done = syncFolderOf(file);
    if (done) {
        done = renameTo(whole, file);
    }
    if (done) {
        done = syncFolderOf(file);
    }
    return done ? Result<path>(aside) : done.error();
}

} // namespace

path replacementDraft(const path& file) {
    return withSuffix(file, "-repairing");
}

path replacementScratch(const path& file) {
    return withSuffix(replacementDraft(file), "-scratch");
}

void discardReplacementDraft(const path& file) {
    for (const char* part : parts) {
        unlink(withSuffix(replacementDraft(file), part).c_str());
        unlink(withSuffix(replacementScratch(file), part).c_str());
    }
}

Result<path> replaceByDraft(const path& file) {
    const path draft = replacementDraft(file);
    if (Result<void> renamed = renameTo(draft, withSuffix(file, "-repaired")); !renamed) {
        return renamed.error();
    }
    if (Result<void> synced = syncFolderOf(file); !synced) {
        return synced.error();
    }
    const Result<std::optional<path>> finished = finishReplacement(file);
    if (!finished) {
        return finished.error();
    }
    return finished.value().value_or(numbered(file, std::max(1, freeNumber(file) - 1)));
}

Result<std::optional<path>> finishReplacement(const path& file) {
    const path whole = withSuffix(file, "-repaired");
    const FileDescriptor descriptor(open(whole.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!descriptor) {
        return errno == ENOENT ? Result<std::optional<path>>(std::nullopt) : systemError(errno, whole);
    }
    while (flock(descriptor.get(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            return systemError(errno, whole);
        }
    }
    struct stat locked {};
    struct stat named {};
    if (fstat(descriptor.get(), &locked) != 0) {
        return systemError(errno, whole);
    }
    if (stat(whole.c_str(), &named) != 0 || named.st_ino != locked.st_ino) {
        return std::optional<path>();
    }
    const Result<path> aside = moveIntoPlace(file, whole);
    return aside ? Result<std::optional<path>>(aside.value()) : aside.error();
}

} // namespace teralune
