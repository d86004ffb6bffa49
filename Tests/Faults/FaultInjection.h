#pragma once

#include <cstdint>
#include <filesystem>

namespace teralune {

/// What the store asks of the system, and can be made to fail: SQLite's and the exchange of a database's
/// calls and memory, and C++'s own memory.
enum class Call : std::uint8_t {
    read,
    write,
    sync,
    truncate,
    open,
    remove,
    map,
    rename,
    allocate,
    makeObject
};

/// What goes wrong: of the calls of some kinds, counted from 1, that of the number; or the room on the disk.
struct Fault {
    enum class Effect : std::uint8_t {
        fails,
        isFull,      ///< "disk full" instead of the call's own error
        fillsDisk,   ///< the folder has room for that many half pages less one beyond what it holds
        limitsFiles, ///< the system lets no file of the process grow beyond as many
        stops,       ///< the process stands still, until it is killed
        kills        ///< the process is gone; of a write, half has reached the file
    };
    std::uint32_t calls = 0; ///< bits of the kinds, from bit()
    int number = 0;
    Effect effect = Effect::fails;
    bool lasts = false; ///< all later calls of these kinds go wrong too

    static constexpr std::uint32_t bit(Call call) { return 1U << static_cast<unsigned>(call); }
};

/// Puts itself between SQLite and the system's files and memory; before SQLite is used, once in the process.
/// Nothing is really synced, which no test could tell from outside and most would wait for.
void installFaults();
void armFault(const Fault& fault, std::filesystem::path folder = {});
/// Whether the fault came to pass since it was armed.
bool disarmFault();

/// Whose are the objects that C++ is asked memory for, on all threads: those of the library may fail, those
/// of the test around it never do.
enum class Owner : bool { test, library };
/// Returns who it was before, which at first is the test.
Owner exchangeMemoryOwner(Owner owner);
template<class Work>
decltype(auto) withMemoryOf(Owner owner, const Work& work) {
    struct Back {
        const Owner before;
        ~Back() { exchangeMemoryOwner(before); }
    } const back{exchangeMemoryOwner(owner)};
    return work();
}
template<class Work>
decltype(auto) ofLibrary(const Work& work) {
    return withMemoryOf(Owner::library, work);
}
/// How many pieces of C++'s memory are in use.
std::int64_t livingObjects();

} // namespace teralune
