#pragma once

#include <cstdint>

namespace teralune {

/// What SQLite and the exchange of a database ask of the system, and can be made to fail.
enum class Call : std::uint8_t { read, write, sync, truncate, open, remove, map, rename, allocate };

/// Which of the calls of a kind goes wrong, counted from 1, and how.
struct Fault {
    enum class Effect : std::uint8_t {
        fails,
        failsFromThenOn,
        isFull,           ///< "disk full" instead of the call's own error
        isFullFromThenOn, ///< the same for all later ones
        stops,            ///< the process stands still, until it is killed
        kills             ///< the process is gone; of a write, half has reached the file
    };
    std::uint32_t calls = 0; ///< bits of the kinds, from bit()
    int number = 0;
    Effect effect = Effect::fails;

    static constexpr std::uint32_t bit(Call call) { return 1U << static_cast<unsigned>(call); }
};

/// Puts itself between SQLite and the system's files and memory; before SQLite is used, once in the process.
/// Nothing is really synced, which no test could tell from outside and most would wait for.
void installFaults();
void armFault(const Fault& fault);
/// Whether the fault came to pass since it was armed.
bool disarmFault();

} // namespace teralune
