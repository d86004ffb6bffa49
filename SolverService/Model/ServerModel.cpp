#include "SolverService/Model/ServerModel.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <sys/stat.h>

namespace teralune::service {

namespace {

constexpr int layoutVersion = 2;

constexpr const char* layout = R"sql(
CREATE TABLE accounts(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    connected TEXT NOT NULL UNIQUE,
    email TEXT UNIQUE COLLATE NOCASE,
    identity TEXT UNIQUE,
    firstName TEXT NOT NULL DEFAULT '',
    lastName TEXT NOT NULL DEFAULT '',
    password BLOB,
    registered INTEGER NOT NULL,
    numDecimalDisplay INTEGER NOT NULL DEFAULT 5,
    steps TEXT NOT NULL DEFAULT 'showSteps',
    dismissed TEXT NOT NULL DEFAULT '[]',
    disabled INTEGER NOT NULL DEFAULT 0);
CREATE TABLE sessions(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    account INTEGER REFERENCES accounts(id),
    ended INTEGER NOT NULL DEFAULT 0);
CREATE TABLE tokens(
    digest BLOB PRIMARY KEY,
    session INTEGER NOT NULL REFERENCES sessions(id),
    issued INTEGER NOT NULL,
    uses INTEGER NOT NULL DEFAULT 0,
    stale INTEGER NOT NULL DEFAULT 0) WITHOUT ROWID;
CREATE TABLE notes(
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    account INTEGER NOT NULL REFERENCES accounts(id),
    remoteID TEXT NOT NULL UNIQUE,
    savedFrom TEXT NOT NULL,
    topic TEXT NOT NULL,
    isFavorite INTEGER NOT NULL DEFAULT 0,
    changed INTEGER NOT NULL,
    tags TEXT NOT NULL DEFAULT '[]',
    problem TEXT NOT NULL,
    notes TEXT NOT NULL DEFAULT '',
    url TEXT,
    graph TEXT,
    graphID TEXT);
CREATE UNIQUE INDEX notesByProblem ON notes(account, problem);
CREATE INDEX notesByChange ON notes(account, changed);
CREATE TABLE lists(
    id TEXT PRIMARY KEY,
    name TEXT NOT NULL,
    notes TEXT NOT NULL);
CREATE TABLE savedLists(
    account INTEGER NOT NULL REFERENCES accounts(id),
    list TEXT NOT NULL REFERENCES lists(id),
    PRIMARY KEY(account, list)) WITHOUT ROWID;
CREATE TABLE usageRecords(
    id INTEGER PRIMARY KEY,
    path TEXT NOT NULL,
    received INTEGER NOT NULL,
    items TEXT NOT NULL);
CREATE TABLE askedProblems(
    problem TEXT PRIMARY KEY,
    plain TEXT NOT NULL,
    bucket TEXT NOT NULL,
    asked INTEGER NOT NULL) WITHOUT ROWID;
CREATE INDEX usageRecordsByPath ON usageRecords(path);
)sql";

void prepare(SQLite::Database& database) {
    database.exec("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=ON;");
    SQLite::Transaction transaction(database);
    if (database.execAndGet("PRAGMA user_version").getInt() == 0 &&
        database.execAndGet("SELECT count(*) FROM sqlite_master").getInt() == 0) {
        database.exec(layout);
        database.exec("PRAGMA user_version=" + std::to_string(layoutVersion));
    }
    transaction.commit();
}

} // namespace

ServerModel::ServerModel(std::unique_ptr<SQLite::Database> database, WallClock clock)
    : database_(std::move(database))
    , clock_(std::move(clock)) {}

ServerModel::~ServerModel() = default;

Result<std::unique_ptr<ServerModel>> ServerModel::open(const std::string& file, WallClock clock) {
    try {
        auto database =
            std::make_unique<SQLite::Database>(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        if (file != ":memory:") {
            // Password digests and everybody's notes: nobody else's business.
            chmod(file.c_str(), S_IRUSR | S_IWUSR);
        }
        prepare(*database);
        if (database->execAndGet("PRAGMA user_version").getInt() != layoutVersion) {
            return Error{"TeraluneSolverService", 0, file + " is not a data file of this service.", {}};
        }
        return std::unique_ptr<ServerModel>(new ServerModel(std::move(database), std::move(clock)));
    } catch (const SQLite::Exception& exception) {
        return Error{"TeraluneSolverService",
                     exception.getErrorCode(),
                     file + " can't be opened: " + exception.what(),
                     {}};
    }
}

std::int64_t ServerModel::nowSeconds() const {
    return std::chrono::duration_cast<std::chrono::seconds>(clock_().time_since_epoch()).count();
}

} // namespace teralune::service
