#include "Benchmarks/BenchmarkStore.h"

#include "Benchmarks/NotebookBytes.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Foundation/JsonMapping.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace teralune::benchmarks {

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "the benchmark does not do what it measures: %s\n", what);
        std::exit(2);
    }
}

BenchmarkStore::BenchmarkStore() {
    PlatformServices& services = application_.fakePlatform.services;
    services.documentsDirectories = {folder_.path()};
    services.defaultQueue = services.queuePool->makeConcurrentQueue("default");
    open();
}

void BenchmarkStore::open() {
    controller_ = std::make_unique<DataController>(application_);
}

void BenchmarkStore::merge(std::string_view reply) {
    const Result<boost::json::value> parsed = parseJson(reply);
    repository().insertNotebookEntries(parsed.value().get_array());
}

void BenchmarkStore::cacheSteps(int count, std::size_t size) {
    const std::string steps(size, 's');
    for (int note = 0; note < count; ++note) {
        repository().updateProblemWithSteps(problemOf(note), steps);
    }
    application_.fakePlatform.printer->takeLines();
}

} // namespace teralune::benchmarks
