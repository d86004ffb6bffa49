#pragma once

#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Classes/Model/CoreData/DataController.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/TemporaryFolder.h"

#include <filesystem>
#include <memory>
#include <string_view>

namespace teralune::benchmarks {

/// Ends the program when the benchmark does not do what it measures.
void require(bool holds, const char* what);

/// A store of our own in a fresh folder, open from the beginning.
class BenchmarkStore {
public:
    BenchmarkStore();

    void close() { controller_.reset(); }
    void open();

    /// Takes the server's reply as bytes, as a synchronization does.
    void merge(std::string_view reply);
    /// Gives the newest notes steps of that many bytes each.
    void cacheSteps(int count, std::size_t size);

    NotebookEntryRepositoryType& repository() { return controller_->notebookEntryRepository(); }
    FakeApplication& application() { return application_; }
    DataController& controller() { return *controller_; }
    std::filesystem::path file() const { return folder_.path() / "DataModel2.sqlite"; }

private:
    TemporaryFolder folder_;
    FakeApplication application_;
    std::unique_ptr<DataController> controller_;
};

} // namespace teralune::benchmarks
