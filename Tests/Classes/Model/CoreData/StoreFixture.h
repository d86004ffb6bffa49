#pragma once

#include "Classes/Model/CoreData/DataController.h"
#include "Classes/Model/CoreData/NotebookEntryRepository.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Platform/Database/Database.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/TemporaryFolder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace teralune {

/// A notebook store in a folder of its own. At the end of a test no error is left that it did not take.
class StoreFixture : public testing::Test {
protected:
    StoreFixture() {
        // A controller needs its queue's thread, which a forked child would not have.
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        giveStore(application);
        controller = std::make_unique<DataController>(application);
    }
    ~StoreFixture() override {
        for (const auto& recorded : reporter.takeErrors()) {
            ADD_FAILURE() << "an error was recorded: " << recorded.error.localizedDescription;
        }
    }

    /// Lets the host keep its store in this test's folder.
    void giveStore(FakeApplication& host) const {
        PlatformServices& services = host.fakePlatform.services;
        services.documentsDirectories = {"/nonexistent", folder.path()};
        // The controller waits for this queue, so it needs a thread.
        services.defaultQueue = services.queuePool->makeConcurrentQueue("default");
    }

    using Texts = std::vector<std::string>;

    ObjectContext& context() { return controller->managedObjectContext(); }
    Texts takeLines() { return application.fakePlatform.printer->takeLines(); }
    NotebookEntryRepository& repository() {
        return static_cast<NotebookEntryRepository&>(controller->notebookEntryRepository());
    }
    void merge(std::string_view list) {
        repository().insertNotebookEntries(parseJson(list).value().get_array());
    }

    /// The one number that a query on the saved state gives.
    std::int64_t number(std::string_view sql) {
        std::int64_t value = -1;
        EXPECT_TRUE(context().fetchAndWait([&](Database& database) -> Result<void> {
            value = database.integer(sql).value();
            return {};
        }));
        return value;
    }
    void execute(std::string_view sql) {
        const Result<void> done =
            context().performAndWait([&](Database& database) { return database.execute(sql); });
        EXPECT_TRUE(done) << (done ? "" : done.error().localizedDescription);
    }
    std::vector<NotebookEntry> notes() { return repository().entriesForFilter(Filter()); }
    NotebookEntry note(std::string_view problem) {
        const std::vector<NotebookEntry> all = notes();
        const auto found =
            std::find_if(all.begin(), all.end(), [&](const auto& one) { return one.problem() == problem; });
        return found != all.end() ? *found : NotebookEntry(NotebookEntryValues{});
    }
    /// The tags of every note by its problem.
    std::map<std::string, std::set<std::string>> tagsByProblem() {
        std::map<std::string, std::set<std::string>> tags;
        for (const NotebookEntry& one : notes()) {
            tags[one.problem().value_or("")] = {one.tagStrings().begin(), one.tagStrings().end()};
        }
        return tags;
    }
    bool printed(const std::string& line) {
        const Texts lines = takeLines();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "DataModel2.sqlite";
    FakeApplication application;
    RecordingCrashReporter& reporter = application.recordingCrashReporter;
    std::unique_ptr<DataController> controller;
};

} // namespace teralune
