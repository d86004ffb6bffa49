#include "Tests/Faults/FaultInjection.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <map>
#include <new>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace teralune {
namespace {

constexpr std::int64_t halfPage = 2048;

Fault armed;
std::atomic<int> counted = 0;
std::atomic<bool> hasStruck = false;
std::atomic<Owner> memoryOwner = Owner::test;
std::atomic<std::int64_t> living = 0;
std::filesystem::path disk;
std::int64_t room = 0;
rlimit ownLimit{};
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
    const bool isIt = armed.lasts ? number >= armed.number : number == armed.number;
    hasStruck = hasStruck || isIt;
    return isIt;
}

/// What the call gives when it goes wrong.
int outcome(int code) {
    if (armed.effect == Fault::Effect::kills) {
        kill(getpid(), SIGKILL);
    }
    if (armed.effect == Fault::Effect::stops) {
        raise(SIGSTOP);
    }
    return armed.effect == Fault::Effect::isFull ? SQLITE_FULL : code;
}

/// The index of a log is no file that a disk without room would lack room for.
std::int64_t occupied() {
    std::uintmax_t sum = 0;
    for (const auto& entry : std::filesystem::directory_iterator(disk)) {
        sum += entry.path().native().ends_with("-shm") ? 0 : entry.file_size();
    }
    return static_cast<std::int64_t>(sum);
}

/// The system's method, unless it goes wrong.
template<Call call, int code, auto method, class... Arguments>
int orFail(sqlite3_file* file, Arguments... arguments) {
    return strikes(call) ? outcome(code) : (realMethods->*method)(file, arguments...);
}

int writeFile(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    if (strikes(Call::write)) {
        realMethods->xWrite(file, bytes, count / 2, offset);
        return outcome(SQLITE_IOERR_WRITE);
    }
    sqlite3_int64 size = 0;
    if (!disk.empty() && realMethods->xFileSize(file, &size) == SQLITE_OK && offset + count > size) {
        const sqlite3_int64 lacking = offset + count - size - (room - occupied());
        if (lacking > 0) {
            hasStruck = true;
            realMethods->xWrite(file, bytes, static_cast<int>(std::max<sqlite3_int64>(0, count - lacking)),
                                offset);
            return SQLITE_FULL;
        }
    }
    return realMethods->xWrite(file, bytes, count, offset);
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
            changed.xRead = orFail<Call::read, SQLITE_IOERR_READ, &sqlite3_io_methods::xRead>;
            changed.xWrite = writeFile;
            changed.xTruncate = orFail<Call::truncate, SQLITE_IOERR_TRUNCATE, &sqlite3_io_methods::xTruncate>;
            changed.xSync = [](sqlite3_file*, int) {
                return strikes(Call::sync) ? outcome(SQLITE_IOERR_FSYNC) : SQLITE_OK;
            };
            if (changed.xShmMap != nullptr) {
                realMethods = file->pMethods;
                changed.xShmMap = orFail<Call::map, SQLITE_IOERR_SHMMAP, &sqlite3_io_methods::xShmMap>;
            }
        }
        file->pMethods = &changed;
    }
    return code;
}

constexpr std::align_val_t usual{__STDCPP_DEFAULT_NEW_ALIGNMENT__};

void* makeObject(std::size_t size, std::align_val_t alignment = usual) noexcept {
    if (memoryOwner == Owner::library && strikes(Call::makeObject)) {
        return nullptr;
    }
    const auto step = static_cast<std::size_t>(alignment);
    ++living;
    return std::aligned_alloc(step, (std::max<std::size_t>(size, 1) + step - 1) / step * step);
}

void* makeOrThrow(std::size_t size, std::align_val_t alignment = usual) {
    if (void* const memory = makeObject(size, alignment)) {
        return memory;
    }
    throw std::bad_alloc();
}

void dropObject(void* memory) noexcept {
    living -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

} // namespace

void installFaults() {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &realMemory);
    sqlite3_mem_methods memory = realMemory;
    memory.xMalloc = [](int size) { return strikes(Call::allocate) ? nullptr : realMemory.xMalloc(size); };
    memory.xRealloc = [](void* old, int size) {
        return strikes(Call::allocate) ? nullptr : realMemory.xRealloc(old, size);
    };
    if (sqlite3_config(SQLITE_CONFIG_MALLOC, &memory) != SQLITE_OK) {
        std::abort();
    }
    realFiles = sqlite3_vfs_find(nullptr);
    files = *realFiles;
    files.zName = "faulty";
    files.xOpen = openFile;
    files.xDelete = [](sqlite3_vfs*, const char* name, int) {
        return strikes(Call::remove) ? outcome(SQLITE_IOERR_DELETE) : realFiles->xDelete(realFiles, name, 0);
    };
    sqlite3_vfs_register(&files, 1);
    std::signal(SIGXFSZ, [](int) { hasStruck = true; });
    getrlimit(RLIMIT_FSIZE, &ownLimit);
}

void armFault(const Fault& fault, std::filesystem::path folder) {
    const std::int64_t size = (fault.number - 1) * halfPage;
    if (fault.effect == Fault::Effect::fillsDisk) {
        disk = std::move(folder);
        room = occupied() + size;
    }
    if (fault.effect == Fault::Effect::limitsFiles) {
        const rlimit limit{static_cast<rlim_t>(size), ownLimit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    counted = 0;
    hasStruck = false;
    armed = fault;
}

bool disarmFault() {
    armed = Fault();
    std::filesystem::path().swap(disk);
    setrlimit(RLIMIT_FSIZE, &ownLimit);
    return hasStruck;
}

Owner exchangeMemoryOwner(Owner owner) {
    return memoryOwner.exchange(owner);
}

std::int64_t livingObjects() {
    return living;
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

// The forms for arrays come to these too, but with the address sanitizer, whose own they are.
// clang-format off
using std::size_t, std::align_val_t, std::nothrow_t;
void* operator new(size_t size) { return teralune::makeOrThrow(size); }
void* operator new(size_t size, align_val_t alignment) { return teralune::makeOrThrow(size, alignment); }
void* operator new(size_t size, const nothrow_t&) noexcept { return teralune::makeObject(size); }
void* operator new(size_t size, align_val_t alignment, const nothrow_t&) noexcept { return teralune::makeObject(size, alignment); }
void operator delete(void* memory) noexcept { teralune::dropObject(memory); }
void operator delete(void* memory, size_t) noexcept { teralune::dropObject(memory); }
void operator delete(void* memory, align_val_t) noexcept { teralune::dropObject(memory); }
void operator delete(void* memory, size_t, align_val_t) noexcept { teralune::dropObject(memory); }
// clang-format on
