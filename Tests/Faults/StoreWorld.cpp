#include "Tests/Faults/StoreWorld.h"

#include "Classes/Model/CoreData/ObjectModel.h"
#include "Platform/Database/Database.h"
#include "Platform/Foundation/JsonMapping.h"

#include <cstdlib>
#include <fstream>

namespace teralune {
namespace {

/// One line for each note; a note that says it has steps, and has none, is told.
constexpr std::string_view contents =
    "SELECT group_concat(line, char(10)) FROM (SELECT remoteID || ' ' || ifnull(problem, '') || ' ' || "
    "ifnull(notes, '') || ' ' || ifnull((SELECT group_concat(tagText) FROM (SELECT tagText FROM links JOIN "
    "tags ON tags.id = tagID WHERE entryID = entries.id ORDER BY tagText)), '') || ' ' || "
    "ifnull((SELECT hex(stepsData) FROM steps WHERE entryID = entries.id), '') || iif(isCached = EXISTS("
    "SELECT 1 FROM steps WHERE entryID = entries.id AND lastCached IS NOT NULL), '', ' half cached') AS line "
    "FROM entries ORDER BY remoteID)";
constexpr std::string_view identifiers =
    "SELECT group_concat(line, char(10)) FROM (SELECT remoteID || ' ' || ifnull((SELECT "
    "group_concat(tagText) "
    "FROM (SELECT tagText FROM links JOIN tags ON tags.id = tagID WHERE entryID = entries.id ORDER BY "
    "tagText)), '') AS line FROM entries ORDER BY remoteID)";

std::string textOf(Database& database, std::string_view sql) {
    Statement query = database.statement(sql, Database::Reuse::once);
    const std::string text = query.nextRow() ? query.optionalString(0).value_or("") : "";
    return query.result() ? text : "damaged: " + query.result().error().localizedDescription;
}

} // namespace

StoreWorld::StoreWorld(std::filesystem::path folder, std::size_t textLength)
    : oldList(listOf(0, 12, std::string(textLength, 'o')))
    , newList(listOf(4, 16, std::string(textLength, 'n')))
    , file(folder / "DataModel2.sqlite")
    , settingsFile(folder / "UserDefaults.sqlite")
    , folder_(std::move(folder))
    , textLength_(textLength) {}

std::string StoreWorld::listOf(int first, int last, const std::string& remark) const {
    std::string list = "[";
    for (int number = first; number < last; ++number) {
        const std::string text = std::to_string(100 + number);
        list += list.size() > 1 ? "," : "";
        list += R"({"_id":"i)" + text + R"(","problem":"p)" + text +
                R"(","savedFrom":"Solutions","lastChange":"","date":"Jan 05, 2019 03:04:05 PM","notes":")" +
                remark + R"(","tags":["t)" + std::to_string((number + remark[0]) % 3) + R"("]})";
    }
    return list + "]";
}

bool StoreWorld::hasFailed() {
    const auto errors = application_.recordingCrashReporter.takeErrors();
    application_.fakePlatform.printer->takeLines();
    if (!errors.empty()) {
        lastFailure = errors.front().error.localizedDescription;
    }
    return !errors.empty();
}

bool StoreWorld::open() {
    Result<ObjectModel> model =
        ObjectModel::load(std::filesystem::path(TERALUNE_TEST_RESOURCES) / "DataModel.momd");
    coordinator_ = std::make_shared<PersistentStoreCoordinator>(std::move(model).value());
    const Result<void> opened = coordinator_->addPersistentStore(file);
    if (!opened) {
        lastFailure = opened.error().localizedDescription;
    }
    context_ = std::make_shared<ObjectContext>(coordinator_, application_.fakePlatform.printer);
    repository_ = std::make_unique<NotebookEntryRepository>(context_, application_);
    return opened.succeeded();
}

bool StoreWorld::merge(const std::string& list) {
    repository_->insertNotebookEntries(parseJson(list).value().get_array());
    return !hasFailed();
}

void StoreWorld::mergeWithoutRemoving(const std::string& list) {
    execute("CREATE TRIGGER keep BEFORE DELETE ON entries BEGIN SELECT RAISE(FAIL, 'kept'); END");
    merge(list);
    execute("DROP TRIGGER keep");
}

bool StoreWorld::query() {
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

bool StoreWorld::keepSteps(const std::string& problem) {
    repository_->updateProblemWithSteps(problem, std::string(textLength_ * 10, 's'));
    return !hasFailed();
}

bool StoreWorld::clear() {
    repository_->clear();
    return !hasFailed();
}

bool StoreWorld::openSettings() {
    auto opened = SqliteUserDefaults::open(
        settingsFile, [this](const Error& error) { application_.recordingCrashReporter.recordError(error); });
    if (opened) {
        settings_ = std::move(opened).value();
    } else {
        lastFailure = opened.error().localizedDescription;
    }
    return opened.succeeded();
}

bool StoreWorld::set(std::int64_t value) {
    settings_->set("value", value);
    return settings_->integer("value") == value && !hasFailed();
}

bool StoreWorld::repair() {
    report.reset();
    const Result<StoreRepairReport> repaired = repairStore(
        {.dataFolder = folder_, .mainBundleFolder = {}, .libraryBundleFolder = TERALUNE_TEST_RESOURCES});
    if (repaired) {
        report = repaired.value();
    } else {
        lastFailure = repaired.error().localizedDescription;
    }
    return repaired.succeeded();
}

void StoreWorld::close() {
    settings_.reset();
    repository_.reset();
    context_.reset();
    coordinator_.reset();
    hasFailed();
}

std::string StoreWorld::state(bool identifiersOnly) {
    close();
    std::string found;
    if (!open()) {
        found = "damaged: " + lastFailure;
    } else if (number("SELECT (SELECT count(*) FROM pragma_integrity_check WHERE integrity_check <> 'ok') + "
                      "(SELECT count(*) FROM pragma_foreign_key_check)") != 0) {
        found = "damaged: not whole";
    } else {
        found = textOf(*coordinator_->reader(), identifiersOnly ? identifiers : contents);
    }
    close();
    return found;
}

std::int64_t StoreWorld::setting() {
    close();
    const std::int64_t value = openSettings() ? settings_->integer("value") : -1;
    close();
    return value;
}

std::int64_t StoreWorld::number(std::string_view sql) {
    const Result<std::int64_t> value = coordinator_->reader()->integer(sql);
    return value ? value.value() : -1;
}

void StoreWorld::execute(std::string_view sql) {
    if (!coordinator_->writer()->execute(sql)) {
        std::abort();
    }
}

void StoreWorld::place(const std::string& name, const std::string& bytes) const {
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
        std::filesystem::remove(entry);
    }
    if (!name.empty()) {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
    }
}

std::string StoreWorld::bytes(const std::filesystem::path& of) {
    std::ifstream stream(of, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

namespace {

/// The files that operations begin with, and what they hold.
struct Scenes {
    std::string oldState, oldStore, cachedState, cachedStore, unionState, newState, untaggedState, listed;
    std::string damagedStore, version1, migratedState, oldSettings;
};

Scenes prepareScenes(StoreWorld& world) {
    const std::string store = world.file.filename().string();
    Scenes scenes;
    world.place("", "");
    world.open();
    world.merge(world.oldList);
    scenes.oldState = world.state();
    scenes.oldStore = StoreWorld::bytes(world.file);
    world.open();
    world.keepSteps();
    scenes.cachedState = world.state();
    scenes.cachedStore = StoreWorld::bytes(world.file);
    world.open();
    world.mergeWithoutRemoving(world.newList);
    scenes.unionState = world.state();
    world.open();
    world.merge(world.newList);
    scenes.newState = world.state();
    world.place(store, scenes.cachedStore);
    world.open();
    world.query();
    scenes.listed = world.listed;
    world.execute("DELETE FROM links");
    scenes.untaggedState = world.state();
    world.place(store, scenes.cachedStore);
    world.open();
    world.execute("DROP INDEX entriesByProblem; CREATE TABLE planted(id)");
    world.close();
    scenes.damagedStore = StoreWorld::bytes(world.file);
    scenes.version1 = StoreWorld::bytes(TERALUNE_TEST_VERSION1);
    world.place(store, scenes.version1);
    scenes.migratedState = world.state();
    world.place("", "");
    world.openSettings();
    world.set(1);
    world.close();
    scenes.oldSettings = StoreWorld::bytes(world.settingsFile);
    return scenes;
}

} // namespace

std::vector<Operation> storeOperations(StoreWorld* world) {
    using World = StoreWorld&;
    using Run = bool (*)(World);
    const Run nothing = [](World) { return true; };
    const Run open = [](World one) { return one.open(); };
    const Run openSettings = [](World one) { return one.openSettings(); };
    const auto notes = [](World one) { return one.state(); };
    const auto setting = [](World one) { return std::to_string(one.setting()); };
    const auto listing = [](World one) { return one.close(), one.listed; };
    const Run merge = [](World one) { return one.merge(one.newList); };
    const Run openAndMerge = [](World one) { return one.open() && one.merge(one.newList); };
    const Run set = [](World one) { return one.set(2); };
    const Run openAndSet = [](World one) { return one.openSettings() && one.set(2); };
    const std::string store = "DataModel2.sqlite";
    const Scenes is = world != nullptr ? prepareScenes(*world) : Scenes();
    // clang-format off
    return {
        {"first open", "", "", nothing, open, notes, {""}},
        {"open", store, is.cachedStore, nothing, open, notes, {is.cachedState}},
        {"migration", store, is.version1, nothing, open, notes, {is.migratedState}},
        {"merge", store, is.cachedStore, open, merge, notes, {is.cachedState, is.unionState, is.newState}},
        {"query", store, is.cachedStore, open, [](World one) { return one.query(); }, listing, {"", "failed", is.listed}},
        {"steps", store, is.oldStore, open, [](World one) { return one.keepSteps(); }, notes, {is.oldState, is.cachedState}},
        {"sign-out", store, is.cachedStore, open, [](World one) { return one.clear(); }, notes, {is.cachedState, is.untaggedState, ""}},
        {"close", store, is.cachedStore, openAndMerge, [](World one) { return one.close(), true; }, notes, {is.newState}},
        {"repair", store, is.damagedStore, nothing, [](World one) { return one.repair(); }, notes, {is.cachedState}},
        {"first settings", "", "", nothing, openAndSet, setting, {"0", "2"}},
        {"settings", "UserDefaults.sqlite", is.oldSettings, openSettings, set, setting, {"1", "2"}},
    };
    // clang-format on
}

} // namespace teralune
