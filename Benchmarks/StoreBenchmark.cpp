// Merges and lists twenty thousand notes and compares with SQLite driven by hand. Prints ratios; the exit
// status says whether every goal was met.

#include "Benchmarks/HandWrittenLoader.h"
#include "Benchmarks/InterleavedRatio.h"
#include "Benchmarks/NotebookBytes.h"
#include "Classes/Model/CoreData/DataController.h"
#include "Classes/Model/CoreData/NotebookEntryRepository.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/TemporaryFolder.h"

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

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "the benchmark does not do what it measures: %s\n", what);
        std::exit(2);
    }
}

/// A store of our own in a fresh folder.
class Store {
public:
    Store() {
        PlatformServices& services = application_.fakePlatform.services;
        services.documentsDirectories = {folder_.path()};
        services.defaultQueue = services.queuePool->makeConcurrentQueue("default");
        controller_ = std::make_unique<DataController>(application_);
    }

    void merge(std::string_view reply) {
        const Result<boost::json::value> parsed = parseJson(reply);
        repository().insertNotebookEntries(parsed.value().get_array());
    }
    NotebookEntryRepositoryType& repository() { return controller_->notebookEntryRepository(); }
    std::filesystem::path file() const { return folder_.path() / "DataModel2.sqlite"; }

    /// Gives the newest notes steps of 50 KB each.
    void cacheSteps(int count, std::size_t size) {
        const std::string steps(size, 's');
        for (int note = 0; note < count; ++note) {
            repository().updateProblemWithSteps(problemOf(note), steps);
        }
    }
    void forgetLines() { application_.fakePlatform.printer->takeLines(); }

private:
    TemporaryFolder folder_;
    FakeApplication application_;
    std::unique_ptr<DataController> controller_;
};

bool compareMerges() {
    const std::string reply = notebookBytes(noteCount, {});
    const std::string changed = notebookBytes(noteCount, {.everyHundredthIsChanged = true});
    bool met = true;

    std::unique_ptr<Store> fresh;
    const auto first = [&] {
        fresh = std::make_unique<Store>();
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

    Store settled;
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

bool compareLists() {
    Store store;
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

    const auto nextToCache = [&] {
        constexpr int calls = 200;
        return timed([&] {
            for (int call = 0; call < calls; ++call) {
                require(store.repository().nextEntryToCache().has_value(), "a note is left to be cached");
            }
        });
    };
    const Duration withNone = medianOf(std::vector{nextToCache(), nextToCache(), nextToCache()});
    store.cacheSteps(noteCount / 2, 100);
    const Duration withHalf = medianOf(std::vector{nextToCache(), nextToCache(), nextToCache()});
    store.cacheSteps(noteCount - 1, 100);
    const Duration withAllButOne = medianOf(std::vector{nextToCache(), nextToCache(), nextToCache()});
    std::printf("nextEntryToCache with 0, 10,000 and 19,999 cached: %.4f, %.4f, %.4f ms\n",
                withNone.count() / 200, withHalf.count() / 200, withAllButOne.count() / 200);

    store.cacheSteps(noteCount, stepsSize);
    store.forgetLines();
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
