#include "Tests/Faults/FaultInjection.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace teralune {
namespace {

Fault armed;
std::atomic<int> counted = 0;
sqlite3_vfs* realFiles = nullptr;
sqlite3_vfs files;
/// Of the files that are shared; those of a journal differ in their locks only.
const sqlite3_io_methods* realMethods = nullptr;
std::map<const sqlite3_io_methods*, sqlite3_io_methods> methods;
sqlite3_mem_methods realMemory;

/// Whether this call goes wrong.
bool strikes(Call call) {
    if ((armed.calls & Fault::bit(call)) == 0) {
        return false;
    }
    const int number = ++counted;
    const bool lasts =
        armed.effect == Fault::Effect::failsFromThenOn || armed.effect == Fault::Effect::isFullFromThenOn;
    return lasts ? number >= armed.number : number == armed.number;
}

/// What the call gives when it goes wrong.
int outcome(int code) {
    if (armed.effect == Fault::Effect::kills) {
        kill(getpid(), SIGKILL);
    }
    if (armed.effect == Fault::Effect::stops) {
        raise(SIGSTOP);
    }
    const bool isFull =
        armed.effect == Fault::Effect::isFull || armed.effect == Fault::Effect::isFullFromThenOn;
    return isFull ? SQLITE_FULL : code;
}

int readFile(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    return strikes(Call::read) ? outcome(SQLITE_IOERR_READ) : realMethods->xRead(file, bytes, count, offset);
}

int writeFile(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    if (!strikes(Call::write)) {
        return realMethods->xWrite(file, bytes, count, offset);
    }
    realMethods->xWrite(file, bytes, count / 2, offset);
    return outcome(SQLITE_IOERR_WRITE);
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
    return strikes(Call::truncate) ? outcome(SQLITE_IOERR_TRUNCATE) : realMethods->xTruncate(file, size);
}

int syncFile(sqlite3_file*, int) {
    return strikes(Call::sync) ? outcome(SQLITE_IOERR_FSYNC) : SQLITE_OK;
}

int mapFile(sqlite3_file* file, int page, int size, int extend, volatile void** memory) {
    return strikes(Call::map) ? outcome(SQLITE_IOERR_SHMMAP)
                              : realMethods->xShmMap(file, page, size, extend, memory);
}

/// The file keeps its own state behind the table of its methods, so exchanging the table is enough.
int openFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* given) {
    file->pMethods = nullptr;
    if (strikes(Call::open)) {
        return outcome(SQLITE_CANTOPEN);
    }
    const int code = realFiles->xOpen(realFiles, name, file, flags, given);
    if (code == SQLITE_OK) {
        const auto [found, isNew] = methods.try_emplace(file->pMethods, *file->pMethods);
        sqlite3_io_methods& changed = found->second;
        if (isNew) {
            changed.xRead = readFile;
            changed.xWrite = writeFile;
            changed.xTruncate = truncateFile;
            changed.xSync = syncFile;
            if (changed.xShmMap != nullptr) {
                realMethods = file->pMethods;
                changed.xShmMap = mapFile;
            }
        }
        file->pMethods = &changed;
    }
    return code;
}

int removeFile(sqlite3_vfs*, const char* name, int) {
    return strikes(Call::remove) ? outcome(SQLITE_IOERR_DELETE) : realFiles->xDelete(realFiles, name, 0);
}

void* allocate(int size) {
    return strikes(Call::allocate) ? nullptr : realMemory.xMalloc(size);
}

void* reallocate(void* memory, int size) {
    return strikes(Call::allocate) ? nullptr : realMemory.xRealloc(memory, size);
}

} // namespace

void installFaults() {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &realMemory);
    sqlite3_mem_methods memory = realMemory;
    memory.xMalloc = allocate;
    memory.xRealloc = reallocate;
    realFiles = nullptr;
    if (sqlite3_config(SQLITE_CONFIG_MALLOC, &memory) == SQLITE_OK) {
        realFiles = sqlite3_vfs_find(nullptr);
    }
    if (realFiles == nullptr) {
        std::abort();
    }
    files = *realFiles;
    files.zName = "faulty";
    files.xOpen = openFile;
    files.xDelete = removeFile;
    sqlite3_vfs_register(&files, 1);
}

void armFault(const Fault& fault) {
    counted = 0;
    armed = fault;
}

bool disarmFault() {
    const bool struck = counted >= armed.number;
    armed = Fault();
    return struck;
}

} // namespace teralune

/// In the place of the system's, for what this program is linked of.
extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned flags) noexcept {
    if (teralune::strikes(teralune::Call::rename)) {
        errno = EIO;
        return teralune::outcome(-1);
    }
    return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}
