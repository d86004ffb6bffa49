#include "Benchmarks/HandWrittenLoader.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sqlite3.h>
#include <unordered_map>

namespace teralune::benchmarks {
namespace {

void check(int code, sqlite3* connection) {
    if (code != SQLITE_OK && code != SQLITE_DONE && code != SQLITE_ROW) {
        std::fprintf(stderr, "sqlite: %s\n", sqlite3_errmsg(connection));
        std::exit(2);
    }
}

void execute(sqlite3* connection, const std::string& sql) {
    check(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), connection);
}

sqlite3* open(const std::filesystem::path& file, int flags) {
    sqlite3* connection = nullptr;
    check(sqlite3_open_v2(file.c_str(), &connection, flags | SQLITE_OPEN_NOMUTEX, nullptr), connection);
    execute(connection, "PRAGMA temp_store=MEMORY; PRAGMA cache_size=-8000");
    return connection;
}

sqlite3_stmt* prepare(sqlite3* connection, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr), connection);
    return statement;
}

std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void bindText(sqlite3_stmt* statement, int parameter, const boost::json::object& record, const char* key) {
    const boost::json::value* const member = record.if_contains(key);
    if (member != nullptr && member->is_string()) {
        const boost::json::string& text = member->get_string();
        sqlite3_bind_text(statement, parameter, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    } else {
        sqlite3_bind_null(statement, parameter);
    }
}

std::int64_t milliseconds(const char* date) {
    static constexpr const char* monthNames = "JanFebMarAprMayJunJulAugSepOctNovDec";
    char month[4] = {};
    unsigned day = 0;
    int year = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    char half[3] = {};
    if (std::sscanf(date, "%3s %u, %d %d:%d:%d %2s", month, &day, &year, &hour, &minute, &second, half) !=
        7) {
        return 0;
    }
    const auto number = static_cast<unsigned>((std::strstr(monthNames, month) - monthNames) / 3 + 1);
    const std::chrono::sys_days days =
        std::chrono::year(year) / std::chrono::month(number) / std::chrono::day(day);
    const int hourOfDay = hour % 12 + (half[0] == 'P' ? 12 : 0);
    return (days.time_since_epoch().count() * 86400LL + hourOfDay * 3600 + minute * 60 + second) * 1000;
}

std::optional<std::string> textColumn(sqlite3_stmt* statement, int column) {
    const auto* const bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    if (bytes == nullptr) {
        return std::nullopt;
    }
    return std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
}

} // namespace

struct HandWrittenLoader::State {
    sqlite3* connection = nullptr;
};

HandWrittenLoader::HandWrittenLoader(const std::filesystem::path& folder,
                                     const std::filesystem::path& resources)
    : state_(std::make_unique<State>()) {
    state_->connection = open(folder / "loaded.sqlite", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    execute(state_->connection, "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=ON;"
                                "PRAGMA journal_size_limit=5242880; PRAGMA secure_delete=FAST;");
    for (const char* const script : {"Version1.sql", "Version2.sql", "Version3.sql"}) {
        execute(state_->connection, contents(resources / "DataModel.momd" / script));
    }
}

HandWrittenLoader::~HandWrittenLoader() {
    sqlite3_close(state_->connection);
}

void HandWrittenLoader::load(std::string_view reply) {
    sqlite3* const connection = state_->connection;
    const boost::json::value parsed = boost::json::parse({reply.data(), reply.size()});
    sqlite3_stmt* const entry = prepare(
        connection, "INSERT INTO entries(remoteID, savedFrom, problem, lastChange, isFavorite, topic, notes, "
                    "graph, url) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
    sqlite3_stmt* const tag = prepare(connection, "INSERT INTO tags(tagText) VALUES (?)");
    sqlite3_stmt* const link = prepare(connection, "INSERT INTO links(entryID, tagID) VALUES (?, ?)");
    std::unordered_map<std::string, std::int64_t> tagIDs;
    execute(connection, "BEGIN IMMEDIATE");
    for (const boost::json::value& element : parsed.get_array()) {
        const boost::json::object& record = element.get_object();
        bindText(entry, 1, record, "_id");
        bindText(entry, 2, record, "savedFrom");
        bindText(entry, 3, record, "problem");
        sqlite3_bind_int64(entry, 4, milliseconds(record.at("date").get_string().c_str()));
        sqlite3_bind_int(entry, 5, record.at("isFavorite").get_bool() ? 1 : 0);
        bindText(entry, 6, record, "topic");
        bindText(entry, 7, record, "notes");
        bindText(entry, 8, record, "graph");
        bindText(entry, 9, record, "url");
        check(sqlite3_step(entry), connection);
        sqlite3_reset(entry);
        const std::int64_t entryID = sqlite3_last_insert_rowid(connection);
        for (const boost::json::value& element2 : record.at("tags").get_array()) {
            const boost::json::string& text = element2.get_string();
            const auto [known, isNew] = tagIDs.try_emplace(std::string(text.data(), text.size()), 0);
            if (isNew) {
                sqlite3_bind_text(tag, 1, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
                check(sqlite3_step(tag), connection);
                sqlite3_reset(tag);
                known->second = sqlite3_last_insert_rowid(connection);
            }
            sqlite3_bind_int64(link, 1, entryID);
            sqlite3_bind_int64(link, 2, known->second);
            check(sqlite3_step(link), connection);
            sqlite3_reset(link);
        }
    }
    execute(connection, "COMMIT");
    sqlite3_finalize(link);
    sqlite3_finalize(tag);
    sqlite3_finalize(entry);
}

struct HandWrittenReader::State {
    sqlite3* connection = nullptr;
    sqlite3_stmt* list = nullptr;
};

HandWrittenReader::HandWrittenReader(const std::filesystem::path& file) : state_(std::make_unique<State>()) {
    state_->connection = open(file, SQLITE_OPEN_READONLY);
    state_->list = prepare(state_->connection, "SELECT id, problem, isFavorite, remoteID, notes FROM entries "
                                               "ORDER BY lastChange DESC, id DESC");
}

HandWrittenReader::~HandWrittenReader() {
    sqlite3_finalize(state_->list);
    sqlite3_close(state_->connection);
}

std::vector<HandWrittenReader::Row> HandWrittenReader::list() {
    std::vector<Row> rows;
    while (sqlite3_step(state_->list) == SQLITE_ROW) {
        Row& row = rows.emplace_back();
        row.id = sqlite3_column_int64(state_->list, 0);
        row.problem = textColumn(state_->list, 1);
        if (sqlite3_column_type(state_->list, 2) != SQLITE_NULL) {
            row.isFavorite = sqlite3_column_int(state_->list, 2) != 0;
        }
        row.remoteID = textColumn(state_->list, 3);
        row.notes = textColumn(state_->list, 4);
    }
    sqlite3_reset(state_->list);
    return rows;
}

} // namespace teralune::benchmarks
