#pragma once

#include "Classes/Model/CoreData/NotebookEntryRepository.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Classes/Model/CoreData/PersistentStoreCoordinator.h"
#include "Classes/Model/CoreData/StoreRepair.h"
#include "Platform/Defaults/SqliteUserDefaults.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/TemporaryFolder.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace teralune {

/// A store and settings in one folder, opened as a data controller opens them but without its fatal ends.
class StoreWorld {
public:
    /// With the steps and remarks of this length, so that a test can have many pages or few.
    explicit StoreWorld(std::filesystem::path folder, std::size_t textLength = 20);

    // Each does what its name says; false when it has said that it failed.
    bool open();
    bool merge(const std::string& list);
    /// As if the second of the merge's transactions were missing.
    void mergeWithoutRemoving(const std::string& list);
    bool query();
    bool keepSteps(const std::string& problem = "p107");
    bool clear();
    bool openSettings();
    bool set(std::int64_t value);
    bool repair();

    /// Closes what is open.
    void close();
    /// Opens the store anew and tells what it holds, or "damaged: …" where it is not whole; leaves it closed.
    /// Without identifiers only, what no damage of a text can change.
    std::string state(bool identifiersOnly = false);
    /// The value in the file of the settings; -1 where they can't be opened.
    std::int64_t setting();
    std::int64_t number(std::string_view sql);
    void execute(std::string_view sql);
    /// Replaces all files of the folder.
    void place(const std::string& name, const std::string& bytes) const;

    std::string bytes() const { return bytes(file); }
    static std::string bytes(const std::filesystem::path& of);

    std::string listOf(int first, int last, const std::string& remark) const;
    const std::string& listOfRound(std::int64_t round) const { return round % 2 == 0 ? oldList : newList; }
    /// What is there at first, and what the server's list makes of it.
    const std::string oldList;
    const std::string newList;
    const std::filesystem::path file;
    const std::filesystem::path settingsFile;
    /// What was seen of a query that did not fail.
    std::string listed;
    std::string lastFailure;
    std::optional<StoreRepairReport> report;

private:
    bool hasFailed();

    std::filesystem::path folder_;
    std::size_t textLength_;
    FakeApplication application_;
    std::shared_ptr<PersistentStoreCoordinator> coordinator_;
    std::shared_ptr<ObjectContext> context_;
    std::unique_ptr<NotebookEntryRepository> repository_;
    std::unique_ptr<SqliteUserDefaults> settings_;
};

/// What is done under a fault, with the state that it begins with and the states that it may leave behind.
struct Operation {
    std::string name;
    /// The file before, by its name and bytes, and what is done with it before the fault.
    std::string startName;
    std::string start;
    std::function<bool(StoreWorld&)> opening;
    std::function<bool(StoreWorld&)> run;
    std::function<std::string(StoreWorld&)> state;
    /// Those that may be found afterwards; the last one is that of success.
    std::vector<std::string> states;
};

/// Each operation of the store and the settings that touches the disk. The world is where their files are
/// made; without one they have neither files nor states, which is enough to run them.
std::vector<Operation> storeOperations(StoreWorld* world);

} // namespace teralune
