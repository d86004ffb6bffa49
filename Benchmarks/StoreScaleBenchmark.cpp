// How the store behaves as a notebook grows and while it is worked on: lists during merges, opening with a
// gigabyte of cached steps, cost per note from a thousand notes to a hundred thousand, and the memory that a
// synchronization takes at its peak. Prints ratios; the exit status says whether every goal was met.

#include "Benchmarks/BenchmarkStore.h"
#include "Benchmarks/InterleavedRatio.h"
#include "Benchmarks/NotebookBytes.h"
#include "Benchmarks/SynchronizationMemory.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

using namespace teralune;
using namespace teralune::benchmarks;

namespace {

constexpr std::size_t rounds = 9;
constexpr int noteCount = 20000;

/// Merges a list and a changed one in turn, on a thread of its own, for as long as it lives.
class MergingThread {
public:
    MergingThread(BenchmarkStore& store, const std::string& reply, const std::string& changed)
        : thread_([&, this] {
            for (int merge = 0; !isEnding_; ++merge) {
                store.merge(merge % 2 == 0 ? changed : reply);
                merges_ = merge + 1;
                merges_.notify_all();
            }
        }) {}
    ~MergingThread() {
        isEnding_ = true;
        thread_.join();
    }
    void waitForFirstMerge() const { merges_.wait(0); }

private:
    std::atomic<bool> isEnding_ = false;
    std::atomic<int> merges_ = 0;
    std::thread thread_;
};

Duration listTime(BenchmarkStore& store, int expected) {
    const Filter blank;
    std::size_t count = 0;
    const Duration time = timed([&] { count = store.repository().entriesForFilter(blank).size(); });
    require(count == static_cast<std::size_t>(expected), "the list holds every note");
    return time;
}

bool compareDuringMerge() {
    const std::string reply = notebookBytes(noteCount, {});
    const std::string changed = notebookBytes(noteCount, {.everyHundredthIsChanged = true});
    BenchmarkStore store;
    store.merge(reply);
    constexpr std::size_t stepsSize = 50'000;
    store.cacheSteps(noteCount, stepsSize);
    constexpr int lists = 20;
    const auto list = [&] {
        Duration time{};
        for (int index = 0; index < lists; ++index) {
            time += listTime(store, noteCount);
        }
        return time / lists;
    };
    return printRatio("list while merges run / list alone",
                      interleavedRatio(
                          rounds,
                          [&] {
                              const MergingThread merging(store, reply, changed);
                              merging.waitForFirstMerge();
                              return list();
                          },
                          list),
                      1.5);
}

bool compareOpening() {
    BenchmarkStore empty;
    BenchmarkStore full;
    full.merge(notebookBytes(noteCount, {}));
    constexpr std::size_t stepsSize = 50'000;
    full.cacheSteps(noteCount, stepsSize);
    full.close();
    const auto size = std::filesystem::file_size(full.file());
    require(size > noteCount * stepsSize, "a gigabyte of steps is stored");
    full.open();
    const auto openingOf = [](BenchmarkStore& store) {
        return [&store] {
            store.close();
            return timed([&] { store.open(); });
        };
    };
    return printRatio("opening " + std::to_string(size / 1'000'000) + " MB / opening an empty store",
                      interleavedRatio(rounds * 3, openingOf(full), openingOf(empty)), 3);
}

/// Per note, against ten thousand notes: the larger of the two costs is never beyond the goal.
bool compareScale() {
    constexpr int middle = 10'000;
    bool met = true;
    for (const int count : {1'000, 100'000}) {
        std::unique_ptr<BenchmarkStore> smaller;
        std::unique_ptr<BenchmarkStore> larger;
        const auto mergeOf = [](std::unique_ptr<BenchmarkStore>& store, int notes) {
            return [&store, notes, reply = notebookBytes(notes, {})] {
                store = std::make_unique<BenchmarkStore>();
                return timed([&] { store->merge(reply); }) / notes;
            };
        };
        const auto listOf = [](std::unique_ptr<BenchmarkStore>& store, int notes) {
            return [&store, notes] {
                listTime(*store, notes);
                return listTime(*store, notes) / notes;
            };
        };
        constexpr double goal = 1.5;
        const auto isFlat = [](const Ratio& ratio) {
            return ratio.median <= goal && ratio.median >= 1 / goal;
        };
        const std::string name = " a note, " + std::to_string(count) + " notes / 10,000";
        const Ratio merges = interleavedRatio(rounds, mergeOf(larger, count), mergeOf(smaller, middle));
        printRatio("merge," + name, merges, goal);
        const Ratio lists = interleavedRatio(rounds, listOf(larger, count), listOf(smaller, middle));
        printRatio("list," + name, lists, goal);
        met = met && isFlat(merges) && isFlat(lists);
    }
    return met;
}

} // namespace

int main() {
    // First, in a process that has not grown yet.
    const bool memory = compareSynchronizationMemory(noteCount);
    const bool scale = compareScale();
    const bool during = compareDuringMerge();
    const bool opening = compareOpening();
    return memory && scale && during && opening ? EXIT_SUCCESS : EXIT_FAILURE;
}
