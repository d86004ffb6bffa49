// Merges and lists twenty thousand notes and compares with SQLite driven by hand. Prints ratios; the exit
// status says whether every goal was met.

#include "Benchmarks/BenchmarkStore.h"
#include "Benchmarks/HandWrittenLoader.h"
#include "Benchmarks/InterleavedRatio.h"
#include "Benchmarks/NotebookBytes.h"
#include "Platform/Foundation/JsonMapping.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

using namespace teralune;
using namespace teralune::benchmarks;

namespace {

constexpr std::size_t rounds = 9;
constexpr int noteCount = 20000;
constexpr std::size_t stepsSize = 50000;

bool compareMerges() {
    const std::string reply = notebookBytes(noteCount, {});
    const std::string changed = notebookBytes(noteCount, {.everyHundredthIsChanged = true});
    bool met = true;

    std::unique_ptr<BenchmarkStore> fresh;
    const auto first = [&] {
        fresh = std::make_unique<BenchmarkStore>();
        const Duration time = timed([&] { fresh->merge(reply); });
        require(fresh->repository().noteCount() == noteCount, "the merge stores every note");
        return time;
    };
    met &=
        printRatio("first merge / hand-written loader",
                   interleavedRatio(rounds, first,
                                    [&] {
                                        TemporaryFolder folder;
                                        HandWrittenLoader loader(folder.path(), TERALUNE_BENCHMARK_RESOURCES);
                                        return timed([&] { loader.load(reply); });
                                    }),
                   1.25);

    BenchmarkStore settled;
    settled.merge(reply);
    met &= printRatio("second merge of the same list / first merge",
                      interleavedRatio(
                          rounds, [&] { return timed([&] { settled.merge(reply); }); }, first),
                      0.3);
    bool isChanged = false;
    met &= printRatio("merge with 1 % changed / first merge",
                      interleavedRatio(
                          rounds,
                          [&] {
                              isChanged = !isChanged;
                              return timed([&] { settled.merge(isChanged ? changed : reply); });
                          },
                          first),
                      0.4);
    met &= printRatio(
        "parsing of the reply alone / first merge",
        interleavedRatio(
            rounds,
            [&] { return timed([&] { require(parseJson(reply).succeeded(), "the reply is JSON"); }); },
            first));
    return met;
}

/// The same store with no steps beside one with steps, so that the two take turns.
bool compareNextToCache(BenchmarkStore& none) {
    BenchmarkStore some;
    some.merge(notebookBytes(noteCount, {}));
    const auto askOf = [](BenchmarkStore& store) {
        return [&store] {
            constexpr int calls = 1000;
            const Duration time = timed([&] {
                for (int call = 0; call < calls; ++call) {
                    require(store.repository().nextEntryToCache().has_value(), "a note is left to be cached");
                }
            });
            store.application().fakePlatform.printer->takeLines();
            return time;
        };
    };
    bool met = true;
    for (const int cached : {noteCount / 2, noteCount - 1}) {
        some.cacheSteps(cached, 100);
        met &= printRatio("next entry to cache with " + std::to_string(cached) + " cached / with none",
                          interleavedRatio(rounds, askOf(some), askOf(none)), 1.5);
    }
    return met;
}

bool compareLists() {
    BenchmarkStore store;
    store.merge(notebookBytes(noteCount, {}));
    const Filter blank = store.repository().blankFilter();
    HandWrittenReader reader(store.file());
    const auto ours = [&] {
        std::size_t count = 0;
        const Duration time = timed([&] { count = store.repository().entriesForFilter(blank).size(); });
        require(count == noteCount, "the list holds every note");
        return time;
    };
    const auto theirs = [&] {
        std::size_t count = 0;
        const Duration time = timed([&] { count = reader.list().size(); });
        require(count == noteCount, "the plain list holds every note");
        return time;
    };
    bool met = printRatio("list of 20,000 / plain SELECT into structs",
                          interleavedRatio(rounds * 3, ours, theirs), 1.2);

    met &= compareNextToCache(store);
    store.cacheSteps(noteCount, stepsSize);
    met &= printRatio("the same with 50 KB of steps each", interleavedRatio(rounds * 3, ours, theirs), 1.2);
    met &= printRatio("tags, source and graph of the list / list",
                      interleavedRatio(
                          rounds,
                          [&] {
                              std::vector<NotebookEntry> notes = store.repository().entriesForFilter(blank);
                              std::size_t tags = 0;
                              const Duration time = timed([&] {
                                  for (const NotebookEntry& note : notes) {
                                      tags += note.tagStrings().size();
                                  }
                              });
                              require(tags == std::size_t{3} * noteCount, "each note bears three tags");
                              return time;
                          },
                          ours));
    return met;
}

} // namespace

int main() {
    const bool merges = compareMerges();
    const bool lists = compareLists();
    return merges && lists ? EXIT_SUCCESS : EXIT_FAILURE;
}
