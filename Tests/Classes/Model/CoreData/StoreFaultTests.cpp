#include "Tests/Classes/Model/CoreData/StoreFixture.h"

#include "Classes/Model/CoreData/NotebookTagLinks.h"
#include "Classes/Model/CoreData/PersistentStoreCoordinator.h"
#include "Platform/Database/DatabaseError.h"
#include "Platform/Database/Transaction.h"
#include "Platform/Foundation/Printer.h"

#include <atomic>
#include <future>
#include <thread>

namespace teralune {
namespace {

std::string listOf(int first, int last, const std::string& remarks) {
    std::string list = "[";
    for (int number = first; number < last; ++number) {
        list += list.size() > 1 ? "," : "";
        list += R"({"_id":"id)" + std::to_string(number) + R"(","problem":"p)" + std::to_string(number) +
                R"(","savedFrom":"Solutions","lastChange":"","date":"Jan 05, 2019 03:04:05 PM","notes":")" +
                remarks + R"(","tags":["t)" + std::to_string(number % 3) + R"("]})";
    }
    list += "]";
    return list;
}

class StoreFaultTests : public StoreFixture {
protected:
    void expectWholeStore() {
        EXPECT_EQ(number("SELECT count(*) FROM pragma_integrity_check WHERE integrity_check <> 'ok'"), 0);
        EXPECT_EQ(number("SELECT count(*) FROM pragma_foreign_key_check"), 0);
    }
};

TEST_F(StoreFaultTests, every_operation_on_a_broken_store_gives_its_empty_result_and_says_why) {
    merge(listOf(0, 1, ""));
    NotebookEntry listed = notes().at(0);
    execute("ALTER TABLE entries RENAME TO elsewhere");
    takeLines();
    const std::pair<const char*, std::function<bool()>> operations[] = {
        {"Could not fetch notebook entries: ", [&] { return notes().empty(); }},
        {"Could not fetch notebook entries: ", [&] { return !repository().nextEntryToCache(); }},
        {"Could not fetch notebook entries: ", [&] { return repository().allTopics().empty(); }},
        {"Could not fetch notebook entries: ", [&] { return listed.tagStrings().empty(); }},
        {"Could not count notebook entries: ", [&] { return repository().noteCount() == -1; }},
        {"Could not determine if problem exists: ", [&] { return !repository().getNotebookEntry("p0"); }},
        {"Could not insert notebook entries: ", [&] { return merge("[]"), true; }},
        {"Could not delete all NotebookEntry: ", [&] { return repository().clear(), true; }},
        {"Could not remove selective notes from notebook: ",
         [&] { return repository().removeNotes({listed}), true; }},
        {"Could not fetch or save notebook entry to update for p0: ",
         [&] { return repository().updateProblemWithSteps("p0", "s"), true; }},
        {"Could not fetch notebook entry to update favorite for p0: ",
         [&] { return repository().updateProblem("p0", Favorite{true}), true; }},
        {"Could not update notebook entry: ",
         [&] { return listed.setNotes("n", context(), reporter), listed.notes() == ""; }},
    };
    const auto expectOneError = [this](const std::string& prefix) {
        const auto errors = reporter.takeErrors();
        ASSERT_EQ(errors.size(), 1U) << prefix;
        EXPECT_TRUE(printed(prefix + errors[0].error.localizedDescription)) << prefix;
    };
    for (const auto& [prefix, hasEmptyResult] : operations) {
        EXPECT_TRUE(hasEmptyResult()) << prefix;
        expectOneError(prefix);
    }
    execute("ALTER TABLE tags RENAME TO nowhere");
    EXPECT_EQ(repository().allTagStrings(), Texts());
    expectOneError("Could not fetch entry tags: ");
    execute("ALTER TABLE elsewhere RENAME TO entries");
    listed.setTags(Texts{"new"}, context(), reporter);
    expectOneError("Could not fetch existing notebook entry tags for 'new': ");
}

TEST_F(StoreFaultTests, attributes_that_could_not_be_read_are_read_when_they_are_asked_for_again) {
    merge(listOf(0, 2, ""));
    const std::vector<NotebookEntry> listed = notes();
    NotebookEntry changed = listed.at(0);
    execute("ALTER TABLE tags RENAME COLUMN tagText TO renamed");
    EXPECT_EQ(changed.tagStrings(), Texts());
    EXPECT_EQ(changed.savedFrom(), std::nullopt) << "what was read before the failure is no answer";
    EXPECT_FALSE(changed.readTagStrings());
    EXPECT_EQ(reporter.takeErrors().size(), 1U) << "one fault is told once";
    execute(
        "ALTER TABLE tags RENAME COLUMN renamed TO tagText; ALTER TABLE entries RENAME COLUMN url TO web");
    changed.setTags(Texts{"new"}, context(), reporter);
    EXPECT_FALSE(changed.readTagStrings()) << "the tag that was added is not all there are";
    execute("ALTER TABLE entries RENAME COLUMN web TO url");
    EXPECT_EQ(changed.readTagStrings().value(), (Texts{"t1", "new"}));
    EXPECT_EQ(listed.at(1).tagStrings(), Texts{"t0"});
    const std::vector<NotebookEntry> late = notes();
    const std::vector<NotebookEntry> gone = notes();
    execute("DELETE FROM entries");
    EXPECT_FALSE(gone.at(0).readTagStrings()) << "no tags are not the tags of a note that is gone";
    controller.reset();
    EXPECT_FALSE(late.at(0).readTagStrings());
}

/// Whether anything was printed while a change of the store was under way.
class WatchingPrinter final : public Printer {
public:
    void print(std::string_view line) override {
        lines.emplace_back(line);
        wasInsideChange |= writer != nullptr && writer->isInTransaction();
    }
    std::vector<std::string> lines;
    Database* writer = nullptr;
    bool wasInsideChange = false;
};

TEST_F(StoreFaultTests, no_code_of_the_host_runs_inside_a_change) {
    const auto printer = std::make_shared<WatchingPrinter>();
    application.fakePlatform.services.printer = printer;
    controller = nullptr;
    controller = std::make_unique<DataController>(application);
    printer->writer = controller->persistentStoreCoordinator().writer();
    merge(listOf(0, 3, ""));
    NotebookEntry changed = note("p0");
    execute("CREATE TRIGGER refuses BEFORE DELETE ON entries BEGIN SELECT RAISE(FAIL, 'refused'); END");
    printer->lines.clear();
    merge(listOf(0, 2, ""));
    EXPECT_EQ(printer->lines, (Texts{"Got 2 notebook entries from server.", "Found 1 entries to delete.",
                                     "refused", "Completed refreshing entries in database."}));
    EXPECT_EQ(reporter.takeErrors().size(), 1U);
    execute("ALTER TABLE tags RENAME COLUMN tagText TO renamed");
    printer->lines.clear();
    changed.setTags(Texts{"a", "b"}, context(), reporter);
    EXPECT_EQ(printer->lines.size(), 3U) << "the list's attributes, and each tag";
    EXPECT_EQ(reporter.takeErrors().size(), 3U);
    EXPECT_FALSE(printer->wasInsideChange);
}

TEST_F(StoreFaultTests, a_lost_transaction_fails_what_belonged_to_it_and_nothing_later) {
    merge(listOf(0, 1, ""));
    const auto insertsLate = [](Database& database) {
        return database.execute("INSERT INTO entries(problem) VALUES ('late')");
    };
    Result<void> inner;
    EXPECT_FALSE(context().performAndWait([&](Database& database) {
        Result<void> rolledBack = database.execute("ROLLBACK");
        inner = context().performAndWait(insertsLate);
        return rolledBack;
    }));
    EXPECT_FALSE(inner);
    EXPECT_EQ(number("SELECT count(*) FROM entries"), 1);

    // As a rollback that failed leaves the connection.
    Database& writer = *controller->persistentStoreCoordinator().writer();
    ASSERT_TRUE(writer.execute("BEGIN; INSERT INTO entries(problem) VALUES ('given up')"));
    EXPECT_TRUE(context().performAndWait(insertsLate));
    EXPECT_EQ(number("SELECT count(*) FROM entries"), 2);
    EXPECT_EQ(note("given up").problem(), std::nullopt);

    ASSERT_TRUE(writer.execute("ALTER TABLE tags RENAME TO nowhere"));
    NotebookTagLinks::Outcome outcome;
    EXPECT_FALSE(NotebookTagLinks(writer).add(1, {"a", "b"}, outcome));
    EXPECT_TRUE(outcome.failures.empty()) << "the change has one error, and it is told once";
}

TEST_F(StoreFaultTests, lists_are_whole_and_wait_for_nobody_while_refreshes_run) {
    merge(listOf(0, 100, "a"));
    std::future<std::size_t> listed;
    EXPECT_FALSE(context().performAndWait([&](Database& database) -> Result<void> {
        EXPECT_TRUE(database.execute("DELETE FROM entries"));
        listed = std::async(std::launch::async, [this] { return notes().size(); });
        EXPECT_EQ(listed.wait_for(std::chrono::minutes(1)), std::future_status::ready);
        return Error{"test", 1, "taken back", {}};
    }));
    EXPECT_EQ(listed.get(), 100U) << "what was saved last";
    std::atomic<bool> isOver = false;
    std::thread writer([&] {
        for (int pass = 0; pass < 20; ++pass) {
            merge(pass % 2 == 0 ? listOf(50, 150, "b") : listOf(0, 100, "a"));
        }
        isOver = true;
    });
    const std::set<std::size_t> wholeSizes{100, 150};
    do {
        const std::vector<NotebookEntry> list = notes();
        EXPECT_TRUE(wholeSizes.contains(list.size())) << list.size();
        static_cast<void>(list.at(60).tagStrings());
        repository().updateProblemWithSteps("p60", "steps");
    } while (!isOver);
    writer.join();
    expectWholeStore();
    EXPECT_EQ(note("p60").stepsData(), "steps");
}

} // namespace
} // namespace teralune
