#include "Classes/Model/CoreData/StoreRepair.h"

#include "Classes/Model/CoreData/ObjectModel.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Tests/Classes/Model/CoreData/StoreFixture.h"

#include <fstream>

namespace teralune {
namespace {

using Outcome = StoreRepairReport::Outcome;
using std::filesystem::path;

class StoreRepairTests : public StoreFixture {
protected:
    StoreRepairTests() {
        merge(
            R"([{"_id":"1","problem":"p","savedFrom":"Solutions","lastChange":"","date":"","tags":["t"]}])");
        repository().updateProblemWithSteps("p", std::string(100'000, 's'));
        controller.reset();
    }

    Result<StoreRepairReport> repair() const {
        return repairStore({.dataFolder = folder.path(),
                            .mainBundleFolder = {},
                            .libraryBundleFolder = TERALUNE_TEST_RESOURCES});
    }
    path named(const std::string& name) const { return folder.path() / name; }
    static std::string bytesOf(const path& of) {
        std::ifstream stream(of, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// Every row can be read, and yet the store is damaged.
    void damage(const char* script = "DROP INDEX entriesByProblem; CREATE TABLE planted(id)") const {
        ASSERT_TRUE(std::move(Database::open({.file = file})).value().execute(script));
    }
    void expectTheNote() {
        controller = std::make_unique<DataController>(application);
        EXPECT_EQ(note("p").tagStrings(), std::vector<std::string>{"t"});
        EXPECT_EQ(note("p").stepsData(), std::string(100'000, 's'));
        controller.reset();
    }
};

TEST_F(StoreRepairTests, what_is_no_damage_is_left_alone) {
    const std::string before = bytesOf(file);
    EXPECT_EQ(repair().value().outcome, Outcome::healthy);
    EXPECT_EQ(bytesOf(file), before);
    controller = std::make_unique<DataController>(application);
    EXPECT_EQ(repair().error(), storeError(StoreErrorCode::storeInUse, ""));
    execute("CREATE TABLE later(id); PRAGMA user_version = " +
            std::to_string(ObjectModel::currentVersion + 1));
    controller.reset();
    EXPECT_EQ(repair().error(), storeError(StoreErrorCode::newerStore, ""));
    std::filesystem::remove(file);
    EXPECT_EQ(repair().error(), storeError(StoreErrorCode::noStore, ""));
    std::filesystem::copy_file(path(TERALUNE_TEST_FIXTURES) / "Version1.sqlite", file);
    EXPECT_EQ(repair().value().outcome, Outcome::healthy) << "an older store is migrated when it is opened";
}

TEST_F(StoreRepairTests, a_damaged_store_is_set_aside_under_a_name_of_its_own) {
    const std::pair<const char*, const char*> damages[] = {
        {"DataModel2.damaged-1.sqlite", "UPDATE stepsCount SET value = 30000"},
        {"DataModel2.damaged-2.sqlite", "DROP INDEX entriesByProblem; CREATE TABLE planted(id)"}};
    for (const auto& [name, script] : damages) {
        damage(script);
        const std::string before = bytesOf(file);
        const StoreRepairReport report = repair().value();
        EXPECT_EQ(report.outcome, Outcome::repaired);
        EXPECT_EQ(report.notes, 1);
        EXPECT_EQ(report.steps, 1);
        EXPECT_EQ(report.damagedFile, named(name));
        EXPECT_EQ(bytesOf(named(name)), before);
        for (const path& kept : {file, named(name)}) {
            EXPECT_EQ(std::filesystem::status(kept).permissions(),
                      std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        }
        expectTheNote();
    }
}

TEST_F(StoreRepairTests, a_repair_that_was_interrupted_is_finished_by_whoever_opens_the_store_next) {
    damage();
    ASSERT_EQ(repair().value().outcome, Outcome::repaired);
    const path old = named("DataModel2.damaged-1.sqlite");
    const path whole = named("DataModel2.sqlite-repaired");
    // Before the first of its moves, between its moves, and before the last.
    for (const int moved : {0, 1, 2}) {
        std::filesystem::remove(old.string() + "-wal");
        std::filesystem::rename(file, whole);
        std::filesystem::rename(old, file);
        folder.write("DataModel2.sqlite-wal", "log of the old file");
        if (moved > 0) {
            std::filesystem::rename(named("DataModel2.sqlite-wal"), old.string() + "-wal");
        }
        if (moved > 1) {
            std::filesystem::rename(file, old);
        }
        folder.write("DataModel2.sqlite-repairing", "a draft of a later repair");
        if (moved == 1) {
            EXPECT_EQ(repair().value().outcome, Outcome::healthy);
        }
        expectTheNote();
        EXPECT_EQ(bytesOf(old.string() + "-wal"), "log of the old file");
        EXPECT_FALSE(std::filesystem::exists(whole));
        EXPECT_FALSE(std::filesystem::exists(named("DataModel2.sqlite-repairing")));
    }
}

} // namespace
} // namespace teralune
