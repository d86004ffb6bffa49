#pragma once

namespace teralune::benchmarks {

/// Synchronizes a notebook of that many notes into an empty store, from the request to the committed rows,
/// and compares the most memory that was resident meanwhile with the bytes of the reply. Prints the ratio;
/// returns whether the goal was met. To be called before the program has other threads.
bool compareSynchronizationMemory(int noteCount);

} // namespace teralune::benchmarks
