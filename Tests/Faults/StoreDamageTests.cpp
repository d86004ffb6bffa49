#include "Platform/Database/Database.h"
#include "Tests/Faults/FaultCounts.h"
#include "Tests/Faults/FaultInjection.h"
#include "Tests/Faults/StoreWorld.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace teralune {
namespace {

/// Gives up what root may do beyond others, where a folder of this mode is to stop it. Only in a child.
void becomeNobody(mode_t folderMode) {
    constexpr uid_t nobody = 65534;
    if (folderMode != 0700 && geteuid() == 0 && setuid(nobody) != 0) {
        std::abort();
    }
}

constexpr int noteCount = 40;
constexpr int cachedCount = 10;

class StoreDamageTests : public testing::Test {
protected:
    StoreDamageTests() {
        world.open();
        world.merge(list);
        for (int number = 0; number < cachedCount; ++number) {
            world.keepStepsOf("p" + std::to_string(100 + number));
        }
        sound = world.state(true);
        bytes = world.bytes();
    }

    /// How many rows of the table a damage of this page can cost, where the tree above is whole.
    std::int64_t rowsOn(std::size_t page, const std::string& table) {
        return std::max<std::int64_t>(
            0, world.number("SELECT iif(pagetype = 'internal', " + std::to_string(noteCount) +
                            ", iif(pagetype = 'leaf', ncell, 1)) FROM dbstat WHERE pageno = " +
                            std::to_string(page) + " AND name = '" + table + "'"));
    }

    struct Damage {
        std::string bytes;
        std::string where;
        /// How many of them must come out of it.
        std::int64_t notes = 0;
        std::int64_t steps = 0;
    };
    /// Works with the damaged store as long as it lets itself, and then repairs it.
    void expectAWayOut(const Damage& damage) {
        SCOPED_TRACE(damage.where);
        ++points;
        world.place(StoreWorld::storeName, damage.bytes);
        if (world.open()) {
            ++opened;
            const bool merged = world.merge(world.newList);
            const bool listed = world.query();
            worked += merged && listed && world.keepSteps() ? 1 : 0;
        }
        world.close();
        world.place(StoreWorld::storeName, damage.bytes);
        ASSERT_TRUE(world.repair()) << world.lastFailure;
        if (world.report.outcome == StoreRepairReport::Outcome::repaired) {
            ++repaired;
            ASSERT_EQ(TemporaryFolder::read(*world.report.damagedFile), damage.bytes)
                << "the old file changed";
            ASSERT_GE(world.report.notes, damage.notes);
            ASSERT_GE(world.report.steps, damage.steps);
            savedNotes += world.report.notes;
        } else {
            ASSERT_EQ(world.bytes(), damage.bytes) << "a healthy store changed";
        }
        expectWholeAfterTheNextList();
    }
    void expectWholeAfterTheNextList() {
        ASSERT_THAT(world.state(true), testing::Not(testing::StartsWith("damaged")));
        ASSERT_TRUE(world.open() && world.merge(list)) << world.lastFailure;
        ASSERT_EQ(world.state(true), sound);
    }
    void expectAWayOutOfEach(const std::string& what, const std::vector<Damage>& damages) {
        for (const Damage& damage : damages) {
            ASSERT_NO_FATAL_FAILURE(expectAWayOut(damage));
        }
        printFaults(what, points,
                    std::to_string(opened) + " opened, " + std::to_string(worked) +
                        " worked without an error; " + std::to_string(repaired) + " repaired with " +
                        std::to_string(savedNotes) +
                        " notes saved, old file kept; whole after the next list");
    }

    const TemporaryFolder folder;
    StoreWorld world{folder.path(), 300};
    const std::string list = world.listOf(0, noteCount, std::string(300, 'o'));
    const std::filesystem::path logFile = world.file.string() + "-wal";
    std::string sound;
    std::string bytes;
    std::size_t points = 0;
    int opened = 0;
    int worked = 0;
    int repaired = 0;
    std::int64_t savedNotes = 0;
};

TEST_F(StoreDamageTests, a_store_that_was_cut_off_anywhere_can_be_repaired) {
    std::vector<Damage> damages;
    for (std::size_t length = 0; length < bytes.size(); length += 512) {
        damages.push_back({bytes.substr(0, length), "cut at " + std::to_string(length)});
    }
    expectAWayOutOfEach("store cut off at a multiple of 512 bytes", damages);
}

TEST_F(StoreDamageTests, a_byte_that_changed_costs_at_most_the_rows_of_its_page) {
    constexpr std::size_t pageSize = 4096;
    std::vector<std::pair<std::int64_t, std::int64_t>> rows;
    world.open();
    for (std::size_t page = 1; page <= bytes.size() / pageSize; ++page) {
        rows.emplace_back(rowsOn(page, "entries"), rowsOn(page, "steps"));
    }
    world.close();
    for (std::size_t at = 0; at < bytes.size(); at += at < 100 ? 1 : isLong() ? 5 : 331) {
        Damage damage{bytes, "byte " + std::to_string(at)};
        damage.bytes[at] = static_cast<char>(~bytes[at]);
        const auto [notes, steps] = rows[at / pageSize];
        damage.notes = noteCount - notes;
        damage.steps = notes == 0 ? cachedCount - steps : 0;
        ASSERT_NO_FATAL_FAILURE(expectAWayOut(damage));
    }
    expectAWayOutOfEach("store with a changed byte", {});
}

TEST_F(StoreDamageTests, a_file_that_was_never_a_store_can_be_repaired) {
    const TemporaryFolder other;
    const std::filesystem::path foreign = other.path() / StoreWorld::storeName;
    ASSERT_TRUE(std::move(Database::open({.file = foreign}))
                    .value()
                    .execute("CREATE TABLE entries(id, other); INSERT INTO entries VALUES ('a', 1);"
                             "CREATE VIEW links AS WITH RECURSIVE endless(n) AS (SELECT 1 UNION ALL "
                             "SELECT n + 1 FROM endless) SELECT n AS entryID, n AS tagID FROM endless"));
    expectAWayOutOfEach("file that was never a store",
                        {{"", "nothing"},
                         {"x", "a letter"},
                         {std::string(5000, 'x'), "letters"},
                         {std::string(65536, '\0'), "zeros"},
                         {bytes.substr(0, 4096) + bytes, "a page too many"},
                         {bytes.substr(4096), "a page too few"},
                         {TemporaryFolder::read(foreign), "another program's"}});
}

TEST_F(StoreDamageTests, a_log_that_was_cut_off_anywhere_gives_what_it_holds_even_beside_a_damaged_file) {
    world.open();
    world.merge(world.newList);
    const std::string file = world.bytes();
    const std::string log = TemporaryFolder::read(logFile);
    const std::string newState = world.state(true);
    ASSERT_GT(log.size(), 4096U);
    for (const std::string& damaged : {file, std::string(100, '\0') + file.substr(100), std::string()}) {
        const std::size_t step = isLong() ? 64 : 1031;
        for (std::size_t length = 0; length < log.size() + step; length += step, ++points) {
            SCOPED_TRACE(length);
            const std::string rest = log.substr(0, length);
            world.place(StoreWorld::storeName, damaged);
            std::ofstream(logFile, std::ios::binary) << rest;
            // Without its file the log is all that is left, which opening the store would remove.
            const bool isLost = damaged.empty() && length > 0;
            if (isLost && points % 2 == 0) {
                std::filesystem::remove(world.file);
            }
            ASSERT_TRUE(!isLost || !world.open());
            ASSERT_TRUE(world.repair()) << world.lastFailure;
            repaired += world.report.outcome == StoreRepairReport::Outcome::repaired ? 1 : 0;
            if (isLost) {
                ASSERT_EQ(TemporaryFolder::read(world.report.damagedFile.value().string() + "-wal"), rest);
            } else if (length >= log.size()) {
                ASSERT_EQ(world.state(true), newState) << "the last changes are in the log alone";
            }
            ASSERT_NO_FATAL_FAILURE(expectWholeAfterTheNextList());
        }
    }
    printFaults("log cut off", points, std::to_string(repaired) + " repaired; whole after the next list");
}

TEST_F(StoreDamageTests, damaged_settings_are_refused_or_go_on_working) {
    world.openSettings();
    world.set(1);
    world.close();
    const std::string settings = TemporaryFolder::read(world.settingsFile);
    for (std::size_t at = 0; at < settings.size(); at += at < 100 || isLong() ? 1 : 61) {
        std::string changed = settings;
        changed[at] = static_cast<char>(~changed[at]);
        for (const std::string& damaged : {changed, settings.substr(0, at)}) {
            ++points;
            world.place(StoreWorld::settingsName, damaged);
            if (world.openSettings()) {
                ++opened;
                ASSERT_TRUE(world.set(3)) << at << ": " << world.lastFailure;
                ASSERT_EQ(world.setting(), 3) << at;
            }
        }
    }
    printFaults("settings with a changed byte, or cut off there", points,
                std::to_string(opened) + " opened and worked");
}

TEST_F(StoreDamageTests, a_disk_without_room_for_a_copy_costs_only_what_the_copy_would_have_given) {
    const std::string tail(1 << 20, '\0');
    std::string unlisted = bytes + tail;
    unlisted[unlisted.find("CREATE TABLE steps")] = 'X';
    world.open();
    world.execute("DELETE FROM entries; DROP INDEX entriesByProblem");
    world.close();
    const struct {
        std::string file;
        bool isRepaired;
        std::int64_t notes;
    } cases[] = {
        {unlisted, true, noteCount}, {world.bytes() + tail, true, 0}, {"s" + unlisted.substr(1), false, 0}};
    for (const auto& [file, isRepaired, notes] : cases) {
        world.place(StoreWorld::storeName, file);
        armFault({.number = static_cast<int>(bytes.size() / 1024), .effect = Fault::Effect::limitsFiles});
        EXPECT_EQ(world.repair(), isRepaired) << world.lastFailure;
        disarmFault();
        EXPECT_EQ(world.report.notes, notes);
        EXPECT_EQ(TemporaryFolder::read(isRepaired ? *world.report.damagedFile : world.file), file);
    }
    EXPECT_THAT(world.lastFailure, testing::HasSubstr("File too large"));
}

TEST_F(StoreDamageTests, a_store_that_can_not_be_opened_ends_the_library_and_not_the_settings_or_a_repair) {
    const struct {
        std::string bytes;
        mode_t folderMode = 0700;
        mode_t fileMode = 0600;
    } cases[] = {{bytes.substr(0, 4096)},
                 {bytes.substr(0, 50)},
                 {std::string(4096, 'x')},
                 {"s" + bytes.substr(1)},
                 {""},
                 {bytes, 0555, 0444},
                 {bytes, 0555, 0666},
                 {bytes, 0111, 0600},
                 {bytes, 0000, 0666}};
    for (const auto& [stored, folderMode, fileMode] : cases) {
        world.place(StoreWorld::storeName, stored);
        world.openSettings() && world.set(1) && world.close();
        if (stored.empty()) {
            std::ofstream(logFile) << "what is left";
        }
        chmod(world.file.c_str(), fileMode);
        chmod(world.settingsFile.c_str(), fileMode);
        chmod(folder.path().c_str(), folderMode);
        EXPECT_EXIT((becomeNobody(folderMode), openAsTheLibraryDoes(folder.path())),
                    testing::KilledBySignal(SIGABRT), "Fatal error: Error migrating store: .+");
        if (folderMode != 0700) {
            EXPECT_EXIT((becomeNobody(folderMode), std::exit(world.openSettings() || world.repair() ? 1 : 0)),
                        testing::ExitedWithCode(0), "");
        }
        chmod(folder.path().c_str(), 0700);
        EXPECT_EQ(world.bytes(), stored) << "left for a repair";
        EXPECT_EQ(TemporaryFolder::read(logFile), stored.empty() ? "what is left" : "");
        EXPECT_EQ(world.setting(), 1);
    }
    printFaults("store damaged or without permission", std::size(cases), "fatal message, nothing lost");
}

TEST_F(StoreDamageTests, a_folder_that_is_removed_ends_nothing_and_is_made_again) {
    world.open();
    world.openSettings();
    world.set(1);
    std::filesystem::remove_all(folder.path());
    world.merge(world.newList);
    world.query();
    world.keepSteps();
    EXPECT_TRUE(world.set(2)) << "kept in memory, whatever the disk says";
    world.clear();
    EXPECT_EQ(world.setting(), 0);
    ASSERT_TRUE(world.open() && world.merge(list)) << world.lastFailure;
    EXPECT_EQ(world.state(true), sound);
    EXPECT_EQ(std::filesystem::status(folder.path()).permissions(), std::filesystem::perms::owner_all);
}

} // namespace
} // namespace teralune
