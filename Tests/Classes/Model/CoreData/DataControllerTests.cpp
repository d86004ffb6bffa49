#include "Tests/Classes/Model/CoreData/StoreFixture.h"

#include "Classes/Model/CoreData/ObjectModel.h"
#include "Classes/Model/CoreData/PersistentStoreCoordinator.h"
#include "Platform/Database/Transaction.h"
#include "Platform/Foundation/Bundle.h"

namespace teralune {
namespace {

class DataControllerTests : public StoreFixture {
protected:
    /// Opens the store again, with the file as the test left it.
    void reopen() {
        controller.reset();
        controller = std::make_unique<DataController>(application);
    }
};

TEST_F(DataControllerTests, notes_survive_the_process_and_a_sign_out_leaves_none) {
    merge(
        R"([{"_id":"1","problem":"secret problem","savedFrom":"Solutions","lastChange":"","date":"","tags":["t"]}])");
    repository().updateProblemWithSteps("secret problem", std::string(100'000, 's'));
    reopen();
    EXPECT_EQ(notes().at(0).tagStrings(), Texts{"t"});
    controller->logout();
    EXPECT_EQ(repository().noteCount(), 0);
    EXPECT_EQ(repository().allTagStrings(), Texts());
    EXPECT_LT(controller->getStorageBytes(), 80'000U) << "the space is given back";
    for (const char* suffix : {"", "-wal"}) {
        EXPECT_EQ(TemporaryFolder::read(file.string() + suffix).find("secret problem"), std::string::npos);
    }
}

TEST_F(DataControllerTests, a_store_that_is_up_to_date_opens_while_another_process_writes) {
    Database other = std::move(Database::open({.file = file})).value();
    const Result<Transaction> lock = Transaction::begin(other, Transaction::Kind::writing);
    ASSERT_TRUE(lock);
    reopen();
    EXPECT_EQ(repository().noteCount(), 0);
}

TEST_F(DataControllerTests, a_sign_out_compacts_only_what_it_has_emptied) {
    merge(R"([{"_id":"1","problem":"p","savedFrom":"Solutions","lastChange":"","date":""}])");
    repository().updateProblemWithSteps("p", std::string(100'000, 's'));
    execute("DELETE FROM steps; ALTER TABLE entries RENAME TO elsewhere");
    const std::int64_t freePages = number("PRAGMA freelist_count");
    ASSERT_GT(freePages, 0);
    controller->logout();
    EXPECT_EQ(reporter.takeErrors().size(), 1U);
    EXPECT_GE(number("PRAGMA freelist_count"), freePages);

    execute("ALTER TABLE elsewhere RENAME TO entries; PRAGMA busy_timeout = 0");
    {
        Database other =
            std::move(Database::open({.file = file, .access = Database::Access::readOnly})).value();
        const Result<Transaction> reading = Transaction::begin(other, Transaction::Kind::reading);
        ASSERT_EQ(other.integer("SELECT count(*) FROM entries").value(), 1);
        controller->logout();
        EXPECT_TRUE(printed("Could not compact the notebook store: The store is in use."));
        EXPECT_EQ(reporter.takeErrors().size(), 1U);
    }
    controller->logout();
    EXPECT_EQ(number("PRAGMA freelist_count"), 0);
}

TEST_F(DataControllerTests, storage_is_the_size_of_the_store_file) {
    reopen();
    EXPECT_EQ(controller->getStorageBytes(), std::filesystem::file_size(file));
    std::filesystem::rename(file, folder.path() / "elsewhere");
    EXPECT_DEATH(static_cast<void>(controller->getStorageBytes()), "DataModel2.sqlite");
    EXPECT_TRUE(
        PersistentStoreCoordinator(
            ObjectModel::load(std::filesystem::path(TERALUNE_TEST_RESOURCES) / "DataModel.momd").value())
            .persistentStores()
            .empty());
}

class EarlierVersionTests : public DataControllerTests, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(, EarlierVersionTests, testing::Values("Version1.sqlite", "Version2.sqlite"),
                         [](const auto& name) { return std::filesystem::path(name.param).stem().string(); });

TEST_P(EarlierVersionTests, a_store_of_an_earlier_version_keeps_its_rows) {
    controller.reset();
    for (const char* suffix : {"", "-wal", "-shm"}) {
        std::filesystem::remove(file.string() + suffix);
    }
    std::filesystem::copy_file(std::filesystem::path(TERALUNE_TEST_FIXTURES) / GetParam(), file);
    reopen();
    EXPECT_EQ(number("PRAGMA user_version"), ObjectModel::currentVersion);
    EXPECT_EQ(repository().getNotebookEntry("x+1=2"),
              (AttributeDictionary{{"graph", R"({"functions":["x^2"]})"},
                                   {"isFavorite", true},
                                   {"lastCached", Date(std::chrono::seconds(1546700000))},
                                   {"lastChange", Date(std::chrono::seconds(1546657445))},
                                   {"notes", "remarks"},
                                   {"problem", "x+1=2"},
                                   {"remoteID", "a"},
                                   {"savedFrom", "Solutions"},
                                   {"stepsData", R"({"steps":[1]})"},
                                   {"topic", "Algebra"},
                                   {"url", "https://example.org/1"}}));
    EXPECT_EQ(tagsByProblem(),
              (std::map<std::string, std::set<std::string>>{{"a graph", {}},
                                                            {"a time without steps", {}},
                                                            {"steps without a time", {"Exam"}},
                                                            {"x+1=2", {"Exam", "homework"}}}));
    EXPECT_EQ(note("steps without a time").stepsData(), R"({"steps":[2]})");
    EXPECT_EQ(repository().nextEntryToCache(), "a time without steps");
    repository().updateProblemWithSteps("a time without steps", "s");
    EXPECT_EQ(repository().nextEntryToCache(), "steps without a time");
    execute("INSERT INTO entries(problem) VALUES ('next')");
    EXPECT_EQ(note("next").rowID(), 10) << "the number of a note that was deleted is not given out again";
    EXPECT_EQ(number("SELECT count(*) FROM pragma_integrity_check WHERE integrity_check <> 'ok'"), 0);
    EXPECT_EQ(number("SELECT count(*) FROM pragma_foreign_key_check"), 0);
}

TEST_F(DataControllerTests, the_library_does_not_run_without_its_store) {
    controller.reset();
    const TemporaryFolder resources;
    FakeApplication without;
    giveStore(without);
    PlatformServices& services = without.fakePlatform.services;
    services.libraryBundle = std::make_shared<Bundle>(resources.path(), services.userDefaults);
    EXPECT_DEATH(DataController{without}, "Error loading model from bundle");
    std::filesystem::create_directories(resources.path() / "DataModel.momd/Version1.sql");
    EXPECT_DEATH(DataController{without}, "Error initializing mom from: .*DataModel.momd");
    std::filesystem::remove(resources.path() / "DataModel.momd/Version1.sql");
    resources.write("DataModel.momd/Version1.sql", "CREATE TABLE NotebookEntry(id)");
    EXPECT_DEATH(DataController{without}, "Error initializing mom from: .*DataModel.momd");
    resources.write("DataModel.momd/Version2.sql", "CREATE TABLE NotebookEntry(id)");
    resources.write("DataModel.momd/Version3.sql", "CREATE TABLE NotebookEntry(id)");
    services.documentsDirectories = {folder.path() / "fresh"};
    EXPECT_DEATH(DataController{without}, "Error migrating store: .*NotebookEntry");

    const char* const scripts[] = {"PRAGMA user_version = 4", "PRAGMA user_version = 0"};
    for (const char* script : scripts) {
        ASSERT_TRUE(std::move(Database::open({.file = file})).value().execute(script));
        EXPECT_DEATH(DataController{application}, "Error migrating store: ") << script;
        EXPECT_EQ(
            std::move(Database::open({.file = file})).value().integer("SELECT count(*) FROM entries").value(),
            0)
            << "the file is as it was";
    }
    ASSERT_TRUE(std::move(Database::open({.file = file}))
                    .value()
                    .execute("PRAGMA user_version = 3; ALTER TABLE entries RENAME TO theirs"));
    EXPECT_DEATH(DataController{application}, "Error migrating store: The file is a database, but no");
}

} // namespace
} // namespace teralune
