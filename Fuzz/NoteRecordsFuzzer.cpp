// The server's list of notes: whatever it says, it is merged without an error, and merging it once more
// changes nothing.

#include "Classes/Model/CoreData/NotebookEntryRecord.h"
#include "Classes/Model/CoreData/NotebookEntryRepository.h"
#include "Fuzz/Fuzzer.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Tests/Support/FakeStoreApplication.h"

#include <algorithm>
#include <set>
#include <tuple>

using namespace teralune;

namespace {

using Row = std::tuple<std::optional<std::int64_t>, std::optional<std::string>, std::optional<std::string>,
                       std::optional<bool>, std::optional<std::string>, std::optional<Date>,
                       std::vector<std::string>>;

std::vector<Row> rowsOf(const NotebookEntryRepositoryType& repository) {
    std::vector<Row> rows;
    for (const NotebookEntry& note : repository.entriesForFilter(Filter())) {
        rows.emplace_back(note.rowID(), note.remoteID(), note.problem(), note.isFavorite(), note.graph(),
                          note.lastChange(), note.tagStrings());
    }
    return rows;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FakeStoreApplication host;
    const auto parsed = parseJson(fuzz::textOf(data, size));
    if (!parsed || !parsed.value().is_array()) {
        return 0;
    }
    NotebookEntryRepositoryType& repository = host.dataController->notebookEntryRepository();
    repository.clear();
    repository.insertNotebookEntries(parsed.value().get_array());
    const std::vector<Row> merged = rowsOf(repository);
    std::set<std::string> identifiers;
    for (const boost::json::value& record : parsed.value().get_array()) {
        const NotebookEntryRecord read = NotebookEntryRecord::read(record);
        if (read.isComplete()) {
            identifiers.emplace(*read.id);
        }
    }
    fuzz::require(merged.size() == identifiers.size() &&
                      std::all_of(merged.begin(), merged.end(),
                                  [&](const Row& row) { return identifiers.contains(*std::get<1>(row)); }),
                  "each record that is complete is stored, and nothing else");
    repository.insertNotebookEntries(parsed.value().get_array());
    fuzz::require(rowsOf(repository) == merged, "the same list changes nothing");
    fuzz::require(host.application.recordingCrashReporter.takeErrors().empty(), "no list fails to be stored");
    host.application.fakePlatform.printer->takeLines();
    return 0;
}
