#include "Classes/Model/CoreData/ObjectModel.h"

#include "Classes/Model/CoreData/StoreError.h"
#include "Platform/Database/Database.h"
#include "Platform/Database/Transaction.h"

#include <fstream>
#include <sstream>
#include <utility>

namespace teralune {

namespace {

Error foreignFile() {
    return storeError(StoreErrorCode::foreignFile, "The file is a database, but no notebook store.");
}

/// Another program's database may have the same version number.
Result<void> requireEntries(Database& store) {
    const Result<std::int64_t> tables =
        store.integer("SELECT count(*) FROM sqlite_schema WHERE type = 'table' AND name = 'entries'");
    if (!tables) {
        return tables.error();
    }
    return tables.value() == 1 ? Result<void>() : foreignFile();
}

} // namespace

ObjectModel::ObjectModel(std::vector<std::string> scripts) : scripts_(std::move(scripts)) {}

Result<ObjectModel> ObjectModel::load(const std::filesystem::path& folder) {
    std::vector<std::string> scripts;
    for (std::int64_t version = 1; version <= currentVersion; ++version) {
        const std::filesystem::path file = folder / ("Version" + std::to_string(version) + ".sql");
        std::ifstream stream(file, std::ios::binary);
        // Copied by the stream's own operator, which turns a failing read into the stream's state; so does an
        // empty file.
        std::ostringstream script;
        script << stream.rdbuf();
        if (!stream || !script) {
            return storeError(StoreErrorCode::unreadableModel, "can't read " + file.string());
        }
        scripts.push_back(script.str());
    }
    return ObjectModel(std::move(scripts));
}

Result<void> ObjectModel::migrate(Database& store) const {
    // A store that is current already is opened without the write lock, which another process may hold for
    // long.
    if (const Result<std::int64_t> found = store.integer("PRAGMA user_version");
        found && found.value() == currentVersion) {
        return requireEntries(store);
    }
    Result<Transaction> transaction = Transaction::begin(store, Transaction::Kind::writing);
    if (!transaction) {
        return transaction.error();
    }
    const Result<std::int64_t> version = store.integer("PRAGMA user_version");
    if (!version) {
        return version.error();
    }
    if (version.value() > currentVersion || version.value() < 0) {
        return storeError(StoreErrorCode::newerStore,
                          "The store has version " + std::to_string(version.value()) +
                              "; the newest known is " + std::to_string(currentVersion) + ".");
    }
    if (version.value() == 0) {
        const Result<std::int64_t> foreignTables = store.integer("SELECT count(*) FROM sqlite_schema");
        if (!foreignTables) {
            return foreignTables.error();
        }
        if (foreignTables.value() != 0) {
            return foreignFile();
        }
    }
    for (std::int64_t step = version.value() + 1; step <= currentVersion; ++step) {
        if (Result<void> taken = takeStep(store, step); !taken) {
            return taken;
        }
    }
    return transaction.value().commit();
}

Result<void> ObjectModel::takeStep(Database& store, std::int64_t version) const {
    Result<void> taken = store.execute(scripts_[static_cast<std::size_t>(version - 1)]);
    return taken ? store.execute("PRAGMA user_version = " + std::to_string(version)) : taken;
}

} // namespace teralune
