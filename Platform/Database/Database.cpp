#include "Platform/Database/Database.h"

#include "Platform/Database/DatabaseError.h"
#include "Platform/Database/PrivateFile.h"
#include "Platform/Database/StatementCache.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <algorithm>
#include <cerrno>
#include <new>
#include <sqlite3.h>
#include <string>
#include <system_error>

namespace teralune {

// The connection itself is SQLiteCpp's. Statements are prepared, bound and read through SQLite's own calls:
// the wrapper's column objects cost an atomic reference count for each value read, which a list of twenty
// thousand notes feels.
struct Database::State {
    explicit State(const Options& options, int flags)
        : connection(options.file.string(), flags, static_cast<int>(options.busyTimeout.count())) {}

    SQLite::Database connection;
    StatementCache statements; // finalized before the connection closes
    bool hasWriteAheadLog = false;
    std::int64_t salvageTurns = 0;
};

namespace {

// synchronous=NORMAL may lose the latest commits in a power loss, but never mixes them: the next refresh
// brings them back. secure_delete is named because distributions build SQLite with different defaults; FAST
// wipes what costs no extra writing, and the notebook vacuums the file when it is emptied.
constexpr const char* commonSettings = "PRAGMA temp_store=MEMORY;"
                                       "PRAGMA cache_size=-8000;"
                                       "PRAGMA mmap_size=0;"
                                       "PRAGMA cell_size_check=ON;";
constexpr const char* writerSettings = "PRAGMA synchronous=NORMAL;"
                                       "PRAGMA foreign_keys=ON;"
                                       "PRAGMA journal_size_limit=5242880;"
                                       "PRAGMA secure_delete=FAST;";

constexpr int instructionsPerTurn = 10'000;

/// Checking and reading the smallest rows takes some seven of SQLite's instructions for each byte.
std::int64_t turnsFor(std::uintmax_t size) {
    constexpr std::uintmax_t atLeast = 200'000'000;
    constexpr std::uintmax_t perByte = 64;
    return static_cast<std::int64_t>((atLeast + perByte * size) / instructionsPerTurn);
}

int endTurn(void* turnsLeft) {
    return --*static_cast<std::int64_t*>(turnsLeft) < 0 ? 1 : 0;
}

/// A log is begun behind the first page of its file, so beside a file without any it is what is left of one
/// that was lost; SQLite would take it for rubbish and remove it. The log is looked at first: another process
/// may just be making both.
bool isLostBesideItsLog(const std::filesystem::path& file) {
    if (Database::logSize(file) == 0) {
        return false;
    }
    std::error_code missing;
    const std::uintmax_t size = std::filesystem::file_size(file, missing);
    return missing ? missing == std::errc::no_such_file_or_directory : size == 0;
}

sqlite3_file* fileOf(sqlite3* handle) {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    return file;
}

/// Takes the file's lock through the file itself, since what the file holds may be no database, and keeps it
/// until the connection closes. In exclusive mode SQLite builds the index of the log in memory, so that a
/// damaged one beside the file does no harm.
int prepareSalvage(sqlite3* handle) {
    sqlite3_file* const file = fileOf(handle);
    int code = SQLITE_OK;
    for (const int lock : {SQLITE_LOCK_SHARED, SQLITE_LOCK_EXCLUSIVE}) {
        if (code == SQLITE_OK) {
            code = file->pMethods->xLock(file, lock);
        }
    }
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    // None of them reads the file. Without the check of its cells a damaged page would give rows that never
    // were.
    return code == SQLITE_OK ? sqlite3_exec(handle,
                                            "PRAGMA locking_mode=EXCLUSIVE; PRAGMA temp_store=MEMORY;"
                                            "PRAGMA mmap_size=0; PRAGMA cell_size_check=ON",
                                            nullptr, nullptr, nullptr)
                             : code;
}

} // namespace

Database::Database(std::unique_ptr<State> state) : state_(std::move(state)) {}
Database::~Database() = default;
Database::Database(Database&&) noexcept = default;
Database& Database::operator=(Database&&) noexcept = default;

std::uintmax_t Database::logSize(const std::filesystem::path& file) {
    std::error_code missing;
    const std::uintmax_t size = std::filesystem::file_size(file.string() + "-wal", missing);
    return missing ? 0 : size;
}

Result<Database> Database::open(const Options& options) {
    const bool writes = options.access == Access::readWrite;
    const bool salvages = options.access == Access::salvage;
    std::error_code unknown;
    if (salvages && !std::filesystem::exists(options.file, unknown)) {
        return systemError(unknown ? unknown.value() : ENOENT, options.file);
    }
    if (!salvages && isLostBesideItsLog(options.file)) {
        Error error = databaseError(SQLITE_CORRUPT, nullptr);
        error.localizedDescription =
            options.file.string() + " is empty, and the log beside it holds what is left of it";
        return error;
    }
    if (writes || salvages) {
        if (Result<void> file = makePrivateFile(options.file); !file) {
            return file.error();
        }
    }
    // The callers lock, so the connection need not do so again at each column.
    const int access =
        writes || salvages ? SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE : SQLite::OPEN_READONLY;
    std::unique_ptr<State> state;
    try {
        state = std::make_unique<State>(options, access | SQLite::OPEN_NOMUTEX);
    } catch (const SQLite::Exception& exception) {
        Error error = databaseError(exception.getExtendedErrorCode(), nullptr);
        error.localizedDescription = exception.what();
        return error;
    } catch (const std::bad_alloc&) {
        return databaseError(SQLITE_NOMEM, nullptr);
    }
    sqlite3* const handle = state->connection.getHandle();
    sqlite3_extended_result_codes(handle, 1);
    if (salvages) {
        if (const int code = prepareSalvage(handle); code != SQLITE_OK) {
            return databaseError(code, nullptr);
        }
        state->salvageTurns =
            turnsFor(std::filesystem::file_size(options.file, unknown) + logSize(options.file));
        sqlite3_progress_handler(handle, instructionsPerTurn, endTurn, &state->salvageTurns);
        return Database(std::move(state));
    }
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);

    Database database(std::move(state));
    if (Result<void> settings = database.execute(commonSettings); !settings) {
        return settings.error();
    }
    Statement journal =
        database.statement(writes ? "PRAGMA journal_mode=WAL" : "PRAGMA journal_mode", Reuse::once);
    while (journal.nextRow()) {
        database.state_->hasWriteAheadLog = journal.text(0) == "wal";
    }
    if (Result<void> read = journal.result(); !read) {
        return read.error();
    }
    if (writes) {
        if (database.isReadOnly()) {
            return databaseError(SQLITE_READONLY, nullptr);
        }
        Result<void> settings = database.execute(writerSettings);
        if (settings && !database.state_->hasWriteAheadLog) {
            // Without the log NORMAL could leave a broken file behind.
            settings = database.execute("PRAGMA synchronous=FULL");
        }
        if (!settings) {
            return settings.error();
        }
    }
    // Ending a transaction must not depend on memory that can be had only afterwards.
    for (const char* ending : {"COMMIT", "ROLLBACK"}) {
        if (Result<void> prepared = database.statement(ending).result(); !prepared) {
            return prepared.error();
        }
    }
    return database;
}

Result<void> Database::execute(std::string_view script) {
    const int code = state_->connection.tryExec(std::string(script).c_str());
    if (code != SQLITE_OK) {
        return databaseError(sqlite3_extended_errcode(state_->connection.getHandle()),
                             state_->connection.getHandle());
    }
    return {};
}

Statement Database::statement(std::string_view sql, Reuse reuse) {
    StatementCache* const cache = reuse == Reuse::kept ? &state_->statements : nullptr;
    if (cache != nullptr) {
        if (sqlite3_stmt* const idle = cache->take(sql)) {
            return {idle, cache, std::nullopt};
        }
    }
    sqlite3* const handle = state_->connection.getHandle();
    sqlite3_stmt* prepared = nullptr;
    const int code =
        sqlite3_prepare_v3(handle, sql.data(), static_cast<int>(sql.size()),
                           reuse == Reuse::kept ? SQLITE_PREPARE_PERSISTENT : 0, &prepared, nullptr);
    if (code != SQLITE_OK) {
        return {nullptr, nullptr, databaseError(code, handle)};
    }
    return {prepared, cache, std::nullopt};
}

Result<std::int64_t> Database::integer(std::string_view sql) {
    Statement query = statement(sql);
    if (query.nextRow()) {
        return query.integer(0);
    }
    if (Result<void> result = query.result(); !result) {
        return result.error();
    }
    return databaseError(SQLITE_DONE, nullptr);
}

Result<std::int64_t> Database::fileSize() const {
    sqlite3_file* const file = fileOf(state_->connection.getHandle());
    sqlite3_int64 size = 0;
    const int code = file->pMethods->xFileSize(file, &size);
    return code == SQLITE_OK ? Result<std::int64_t>(size) : databaseError(code, nullptr);
}

Result<std::string> Database::fileBytes(std::int64_t offset, std::size_t length) const {
    const Result<std::int64_t> size = fileSize();
    if (!size) {
        return size.error();
    }
    const auto wanted = static_cast<std::int64_t>(length);
    const std::int64_t there = std::clamp<std::int64_t>(size.value() - offset, 0, wanted);
    std::string bytes(static_cast<std::size_t>(there), '\0');
    sqlite3_file* const file = fileOf(state_->connection.getHandle());
    const int code = bytes.empty()
                         ? SQLITE_OK
                         : file->pMethods->xRead(file, bytes.data(), static_cast<int>(bytes.size()), offset);
    return code == SQLITE_OK ? Result<std::string>(std::move(bytes)) : databaseError(code, nullptr);
}

void Database::passOverDamage() {
    sqlite3_db_config(state_->connection.getHandle(), SQLITE_DBCONFIG_WRITABLE_SCHEMA, 1, nullptr);
}

bool Database::isInTransaction() const {
    return sqlite3_get_autocommit(state_->connection.getHandle()) == 0;
}

bool Database::isReadOnly() const {
    return sqlite3_db_readonly(state_->connection.getHandle(), "main") != 0;
}

bool Database::hasWriteAheadLog() const {
    return state_->hasWriteAheadLog;
}

std::int64_t Database::lastInsertedRowID() const {
    return sqlite3_last_insert_rowid(state_->connection.getHandle());
}

} // namespace teralune
