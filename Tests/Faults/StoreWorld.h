#pragma once

#include "Classes/Model/CoreData/NotebookEntryRepository.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Classes/Model/CoreData/ObjectModel.h"
#include "Classes/Model/CoreData/PersistentStoreCoordinator.h"
#include "Classes/Model/CoreData/StoreRepair.h"
#include "Platform/Defaults/SqliteUserDefaults.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fstream>
#include <memory>
#include <optional>
#include <string>

namespace teralune {

/// A store and settings in one folder, opened as a data controller opens them but without its fatal ends.
class StoreWorld {
public:
    static constexpr const char* storeName = "DataModel2.sqlite";
    static constexpr const char* settingsName = "UserDefaults.sqlite";
    using Path = std::filesystem::path;

    /// With texts of this length, so that a test can have many pages or few.
    explicit StoreWorld(Path folder, std::size_t textLength = 20)
        : folder_(std::move(folder))
        , textLength_(textLength) {}

    // ---- What is done. Each does what its name says; false when it has said that it failed.

    bool open() {
        Result<ObjectModel> model = ObjectModel::load(Path(TERALUNE_TEST_RESOURCES) / "DataModel.momd");
        coordinator_ = std::make_shared<PersistentStoreCoordinator>(std::move(model).value());
        context_ = std::make_shared<ObjectContext>(coordinator_, application_.fakePlatform.printer);
        repository_ = std::make_unique<NotebookEntryRepository>(context_, application_);
        return told(coordinator_->addPersistentStore(file));
    }
    bool merge(const std::string& list) {
        return repository_->insertNotebookEntries(parseJson(list).value().get_array()), !hasFailed();
    }
    /// As if the second of the merge's transactions were missing.
    bool mergeWithoutRemoving(const std::string& list) {
        execute("CREATE TRIGGER keep BEFORE DELETE ON entries BEGIN SELECT RAISE(FAIL, 'kept'); END");
        merge(list);
        return execute("DROP TRIGGER keep");
    }
    bool query() {
        listed.clear();
        for (const NotebookEntry& note : repository_->entriesForFilter(Filter())) {
            const std::vector<std::string> tags = note.tagStrings();
            listed += note.problem().value_or("-") + (tags.empty() ? "-" : tags[0]);
        }
        listed += repository_->nextEntryToCache().value_or("-") + std::to_string(repository_->noteCount());
        const bool failed = hasFailed();
        listed = failed ? "failed" : listed;
        return !failed;
    }
    bool keepSteps(const std::string& problem = "p107") {
        return repository_->updateProblemWithSteps(problem, std::string(textLength_ * 10, 's')), !hasFailed();
    }
    bool clear() { return repository_->clear(), !hasFailed(); }
    bool openSettings() {
        auto opened = SqliteUserDefaults::open(settingsFile, [this](const Error& error) {
            application_.recordingCrashReporter.recordError(error);
        });
        settings_ = opened ? std::move(opened).value() : nullptr;
        return told(opened);
    }
    bool set(std::int64_t value) {
        settings_->set("value", value);
        return settings_->integer("value") == value && !hasFailed();
    }
    bool repair() {
        const Result<StoreRepairReport> repaired = repairStore(
            {.dataFolder = folder_, .mainBundleFolder = {}, .libraryBundleFolder = TERALUNE_TEST_RESOURCES});
        report = repaired ? repaired.value() : StoreRepairReport();
        return told(repaired);
    }
    bool close() {
        settings_.reset();
        repository_.reset();
        context_.reset();
        coordinator_.reset();
        return hasFailed(), true;
    }
    bool execute(const std::string& sql) { return told(coordinator_->writer()->execute(sql)); }

    // ---- What is there. Leaves all closed.

    /// One line for each note with all that it says, or just its identifier and tags, which no damage of
    /// another text can change; "damaged: …" where the store is not whole, or says of a note what is not so.
    std::string state(bool identifiersOnly = false) {
        close();
        std::string found = "damaged: ";
        if (!open()) {
            found += lastFailure;
        } else if (
            number(
                "SELECT (SELECT count(*) FROM pragma_integrity_check WHERE integrity_check <> 'ok') + "
                "(SELECT count(*) FROM pragma_foreign_key_check) + (SELECT count(*) FROM entries WHERE "
                "isCached <> EXISTS(SELECT 1 FROM steps WHERE entryID = id AND lastCached IS NOT NULL))") !=
            0) {
            found += "not whole";
        } else {
            const std::string rest = "|| ifnull(problem, '') || ' ' || ifnull(notes, '') || ' ' || ifnull("
                                     "(SELECT hex(stepsData) FROM steps WHERE entryID = entries.id), '')";
            Statement query = coordinator_->reader()->statement(
                "SELECT group_concat(line, char(10)) FROM (SELECT remoteID || ' ' || ifnull((SELECT "
                "group_concat(tagText) FROM (SELECT tagText FROM links JOIN tags ON tags.id = tagID WHERE "
                "entryID = "
                "entries.id ORDER BY tagText)), '') " +
                    (identifiersOnly ? "" : rest) + " AS line FROM entries ORDER BY remoteID)",
                Database::Reuse::once);
            found = query.nextRow() ? query.optionalString(0).value_or("") : found + "unreadable";
        }
        close();
        return found;
    }
    /// The value in the file of the settings; -1 where they can't be opened.
    std::int64_t setting() {
        close();
        const std::int64_t value = openSettings() ? settings_->integer("value") : -1;
        close();
        return value;
    }
    /// Of the open store; -1 where there is no such number.
    std::int64_t number(const std::string& sql) {
        const Result<std::int64_t> value = coordinator_->reader()->integer(sql);
        return value ? value.value() : -1;
    }

    // ---- Files and lists

    /// Replaces all files of the folder; by none where there is no name.
    void place(const std::string& name, const std::string& bytes) const {
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            std::filesystem::remove(entry);
        }
        if (!name.empty()) {
            std::ofstream(folder_ / name, std::ios::binary) << bytes;
        }
    }
    std::string bytes() const { return bytes(file); }
    static std::string bytes(const Path& of) {
        std::ifstream stream(of, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static std::string listOf(int first, int last, const std::string& remark) {
        std::string list;
        for (int number = first; number < last; ++number) {
            const std::string text = std::to_string(100 + number);
            list +=
                (list.empty() ? R"({"_id":"i)" : R"(,{"_id":"i)") + text + R"(","problem":"p)" + text +
                R"(","savedFrom":"Solutions","lastChange":"","date":"Jan 05, 2019 03:04:05 PM","notes":")" +
                remark + R"(","tags":["t)" + std::to_string((number + remark[0]) % 3) + R"("]})";
        }
        return "[" + list + "]";
    }
    const std::string& listOfRound(std::int64_t round) const { return round % 2 == 0 ? oldList : newList; }

private:
    Path folder_;
    std::size_t textLength_;
    FakeApplication application_;
    std::shared_ptr<PersistentStoreCoordinator> coordinator_;
    std::shared_ptr<ObjectContext> context_;
    std::unique_ptr<NotebookEntryRepository> repository_;
    std::unique_ptr<SqliteUserDefaults> settings_;

    template<class Outcome>
    bool told(const Outcome& outcome) {
        lastFailure = outcome ? lastFailure : outcome.error().localizedDescription;
        return outcome.succeeded();
    }
    bool hasFailed() {
        const auto errors = application_.recordingCrashReporter.takeErrors();
        application_.fakePlatform.printer->takeLines();
        lastFailure = errors.empty() ? lastFailure : errors.front().error.localizedDescription;
        return !errors.empty();
    }

public:
    /// What is there at first, and what the server's list makes of it.
    const std::string oldList = listOf(0, 12, std::string(textLength_, 'o'));
    const std::string newList = listOf(4, 16, std::string(textLength_, 'n'));
    const Path file = folder_ / storeName;
    const Path settingsFile = folder_ / settingsName;
    /// What the latest query gave, or "failed"; the latest repair; the latest failure of all.
    std::string listed;
    StoreRepairReport report;
    std::string lastFailure;
};

} // namespace teralune
