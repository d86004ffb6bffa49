#include "Classes/Model/CoreData/StoreRepair.h"

#include "Classes/Model/CoreData/ObjectModel.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Tests/Classes/Model/CoreData/StoreFixture.h"

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
    /// Every row can be read, and yet the store is damaged.
    void damage(const char* script = "DROP INDEX entriesByProblem; CREATE TABLE planted(id)") const {
        ASSERT_TRUE(std::move(Database::open({.file = file})).value().execute(script));
    }
    void expectTheNote() {
        controller = std::make_unique<DataController>(application);
        EXPECT_EQ(note("p").tagStrings(), Texts{"t"});
        EXPECT_EQ(note("p").stepsData(), std::string(100'000, 's'));
        controller.reset();
    }
};

TEST_F(StoreRepairTests, what_is_no_damage_is_left_alone) {
    const std::string before = TemporaryFolder::read(file);
    EXPECT_EQ(repair().value().outcome, Outcome::healthy);
    EXPECT_EQ(TemporaryFolder::read(file), before);
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
        const std::string before = TemporaryFolder::read(file);
        const StoreRepairReport report = repair().value();
        EXPECT_EQ(report.outcome, Outcome::repaired);
        EXPECT_EQ(report.notes, 1);
        EXPECT_EQ(report.steps, 1);
        EXPECT_EQ(report.damagedFile, named(name));
        EXPECT_EQ(TemporaryFolder::read(named(name)), before);
        for (const path& kept : {file, named(name)}) {
            EXPECT_EQ(std::filesystem::status(kept).permissions(),
                      std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        }
        expectTheNote();
    }
}

} // namespace
} // namespace teralune
