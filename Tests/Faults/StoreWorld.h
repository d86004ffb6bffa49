#pragma once

#include "Classes/Model/CoreData/DataController.h"
#include "Classes/Model/CoreData/NotebookEntryRepository.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Classes/Model/CoreData/ObjectModel.h"
#include "Classes/Model/CoreData/PersistentStoreCoordinator.h"
#include "Classes/Model/CoreData/StoreRepair.h"
#include "Platform/Defaults/SqliteUserDefaults.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Tests/Faults/FaultInjection.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fstream>
#include <memory>
#include <optional>
#include <string>

namespace teralune {

/// Opens the store as a host does, which ends the process where it can't be opened.
inline void openAsTheLibraryDoes(const std::filesystem::path& folder, const Fault& fault = {}) {
    FakeApplication application;
    PlatformServices& services = application.fakePlatform.services;
    services.documentsDirectories = {folder};
    services.defaultQueue = services.queuePool->makeConcurrentQueue("default");
    // The standard library ends the process itself where it has no memory to read a folder. The bundle does
    // so once, and nothing of the store is touched before.
    static_cast<void>(services.libraryBundle->pathForResource("DataModel", "momd"));
    armFault(fault);
    ofLibrary([&] { const DataController controller(application); });
}

/// A store and settings in one folder, opened as a data controller opens them but without its fatal ends.
class StoreWorld {
public:
    static constexpr const char* storeName = "DataModel2.sqlite";
    static constexpr const char* settingsName = "UserDefaults.sqlite";
    static constexpr const char* key = "a key for which a string takes memory";
    using Path = std::filesystem::path;

    /// With texts of this length, so that a test can have many pages or few.
    explicit StoreWorld(Path folder, std::size_t textLength = 20)
        : folder_(std::move(folder))
        , textLength_(textLength) {
        application_.crashReporterService = &reporter_;
        PlatformServices& services = application_.fakePlatform.services;
        services.printer = std::make_shared<SilentPrinter>();
        // Only a process of one thread can be forked safely.
        services.queuePool = services.backgroundPool = nullptr;
    }

    // ---- What is done. Each does what its name says; false when it has said that it failed.

    bool open() {
        coordinator_ = std::make_shared<PersistentStoreCoordinator>(
            ObjectModel::load(Path(TERALUNE_TEST_RESOURCES) / "DataModel.momd").value());
        context_ = std::make_shared<ObjectContext>(coordinator_, application_.fakePlatform.services.printer);
        repository_ = std::make_unique<NotebookEntryRepository>(context_, application_);
        return told(ofLibrary([&] { return coordinator_->addPersistentStore(file); }));
    }
    bool merge(const std::string& list) {
        const boost::json::value parsed = parseJson(list).value();
        return does([&] { repository_->insertNotebookEntries(parsed.get_array()); });
    }
    /// As if the second of the merge's transactions were missing.
    bool mergeWithoutRemoving(const std::string& list) {
        execute("CREATE TRIGGER keep BEFORE DELETE ON entries BEGIN SELECT RAISE(FAIL, 'kept'); END");
        merge(list);
        return execute("DROP TRIGGER keep");
    }
    bool query() {
        Filter filter;
        filter.tagFilter.dict = {{"t1", true}};
        listed.clear();
        for (const Filter& asked : {Filter(), filter}) {
            const auto notes = ofLibrary([&] { return repository_->entriesForFilter(asked); });
            for (const NotebookEntry& note : notes) {
                const std::vector<std::string>& tags =
                    ofLibrary([&]() -> const auto& { return note.tagStrings(); });
                listed += note.problem().value_or("-") + (tags.empty() ? "-" : tags[0]);
            }
        }
        listed += ofLibrary([&] { return repository_->nextEntryToCache(); }).value_or("-");
        listed += std::to_string(ofLibrary([&] { return repository_->noteCount(); }));
        listed += ofLibrary([&] { return repository_->blankFilter(); }).description();
        listed += ofLibrary([&] { return repository_->getNotebookEntry(cachedProblem); }) ? "+" : "-";
        const bool failed = hasFailed();
        listed = failed ? "failed" : listed;
        return !failed;
    }
    bool keepStepsOf(const std::string& problem) {
        const std::string steps(textLength_ * 10, 's');
        return does([&] { repository_->updateProblemWithSteps(problem, steps); });
    }
    bool keepSteps() { return keepStepsOf(cachedProblem); }
    /// A tag for the newest note, which must then say that it bears it.
    bool addTag() {
        const std::optional<std::vector<std::string>> added{{"a tag that is longer than others"}};
        std::vector<NotebookEntry> notes = repository_->entriesForFilter(Filter());
        return !hasFailed() && does([&] { notes[0].setTags(added, *context_, reporter_); }) &&
               notes[0].tagStrings().back() == added->front();
    }
    bool clear() {
        return does([&] { repository_->clear(); });
    }
    bool openSettings() {
        SqliteUserDefaults::FailureReporter reporter = [this](const Error& e) { reporter_.recordError(e); };
        auto opened = ofLibrary([&] { return SqliteUserDefaults::open(settingsFile, std::move(reporter)); });
        settings_ = opened ? std::move(opened).value() : nullptr;
        return told(opened);
    }
    bool set(std::int64_t value) {
        std::int64_t now = 0;
        const bool isSet = does([&] { settings_->set(key, value); });
        return does([&] { now = settings_->integer(key); }) && isSet && now == value;
    }
    bool repair() {
        const PlatformServices::Locations locations{
            .dataFolder = folder_, .mainBundleFolder = {}, .libraryBundleFolder = TERALUNE_TEST_RESOURCES};
        const Result<StoreRepairReport> repaired = ofLibrary([&] { return repairStore(locations); });
        report = repaired ? repaired.value() : StoreRepairReport();
        return told(repaired);
    }
    bool close() {
        does([&] {
            settings_.reset();
            repository_.reset();
            context_.reset();
            coordinator_.reset();
        });
        return true;
    }
    bool execute(const std::string& sql) { return told(coordinator_->writer()->execute(sql)); }

    // ---- What is there. Leaves all closed.

    /// One line for each note with all that it says, or just its identifier and tags, which no damage of
    /// another text can change; "damaged: …" where the store is not whole, or says of a note what is not so.
    std::string state(bool identifiersOnly = false) {
        static constexpr const char* whole =
            "SELECT (SELECT group_concat(integrity_check) = 'ok' FROM pragma_integrity_check) AND NOT EXISTS("
            "SELECT 1 FROM pragma_foreign_key_check) AND NOT EXISTS(SELECT 1 FROM entries WHERE isCached <> "
            "EXISTS(SELECT 1 FROM steps WHERE entryID = id AND lastCached IS NOT NULL))";
        const std::string rest = "|| ifnull(problem, '') || ' ' || ifnull(notes, '') || ' ' || ifnull("
                                 "(SELECT hex(stepsData) FROM steps WHERE entryID = entries.id), '')";
        const std::string lines =
            "SELECT group_concat(line, char(10)) FROM (SELECT remoteID || ' ' || ifnull((SELECT "
            "group_concat(tagText) FROM (SELECT tagText FROM links JOIN tags ON tags.id = tagID WHERE "
            "entryID = entries.id ORDER BY tagText)), '')" +
            (identifiersOnly ? "" : rest) + " AS line FROM entries ORDER BY remoteID)";
        close();
        const bool isWhole = open() && number(whole) == 1;
        std::string found = "damaged: " + lastFailure;
        if (isWhole) {
            Statement query = coordinator_->reader()->statement(lines, Database::Reuse::once);
            found = query.nextRow() ? query.optionalString(0).value_or("") : found + "unreadable";
        }
        close();
        return found;
    }
    /// The value in the file of the settings; -1 where they can't be opened.
    std::int64_t setting() {
        close();
        const std::int64_t value = openSettings() ? settings_->integer(key) : -1;
        close();
        return value;
    }
    /// Of the open store; -1 where there is no such number.
    std::int64_t number(const std::string& sql) {
        const Result<std::int64_t> value = coordinator_->reader()->integer(sql);
        return value ? value.value() : -1;
    }

    // ---- Files and lists

    /// Replaces all files of the folder; by none where there is no name. Forgets what was found.
    void place(const std::string& name = {}, const std::string& bytes = {}) {
        report.damagedFile.reset();
        std::string().swap(listed);
        std::string().swap(lastFailure);
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            std::filesystem::remove(entry);
        }
        if (!name.empty()) {
            std::ofstream(folder_ / name, std::ios::binary) << bytes;
        }
    }
    std::string bytes() const { return TemporaryFolder::read(file); }
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
    /// Whoever is told of a failure has memory to keep it.
    class Reporter final : public CrashReporterType {
    public:
        void recordError(const Error& error) override {
            withMemoryOf(Owner::test, [&] { failures.push_back(error.localizedDescription); });
        }
        void recordError(const Error& error, const UserInfo&) override { recordError(error); }
        void TRL_CLSNSLogv(std::string_view, std::span<const FormatArgument>) override {}
        std::vector<std::string> failures;
    };
    class SilentPrinter final : public Printer {
        void print(std::string_view) override {}
    };

    Path folder_;
    std::size_t textLength_;
    Reporter reporter_;
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
    /// Whether nothing was reported.
    template<class Work>
    bool does(const Work& work) {
        ofLibrary(work);
        return !hasFailed();
    }
    /// Since it was last asked.
    bool hasFailed() {
        lastFailure = reporter_.failures.empty() ? lastFailure : reporter_.failures.front();
        return !std::exchange(reporter_.failures, {}).empty();
    }

public:
    const std::string cachedProblem = "p107";
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
