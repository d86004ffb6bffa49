#include "SolverService/Model/Notebook.h"

#include "SolverService/Model/RandomText.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <boost/json.hpp>

namespace teralune::service {

namespace {

constexpr int identifierBytes = 12;
constexpr const char* columns =
    "SELECT remoteID, problem, savedFrom, topic, notes, tags, isFavorite, changed, url, graph, graphID "
    "FROM notes WHERE account = ? ";

std::optional<std::string> optionalText(const SQLite::Column& column) {
    if (column.isNull()) {
        return std::nullopt;
    }
    return column.getString();
}

NoteRecord readNote(SQLite::Statement& row) {
    NoteRecord note;
    note.remoteID = row.getColumn(0).getString();
    note.problem = row.getColumn(1).getString();
    note.savedFrom = row.getColumn(2).getString();
    note.topic = row.getColumn(3).getString();
    note.notes = row.getColumn(4).getString();
    note.tags =
        boost::json::value_to<std::vector<std::string>>(boost::json::parse(row.getColumn(5).getString()));
    note.isFavorite = row.getColumn(6).getInt() != 0;
    note.lastChange = row.getColumn(7).getInt64();
    note.url = optionalText(row.getColumn(8));
    note.graph = optionalText(row.getColumn(9));
    note.graphID = optionalText(row.getColumn(10));
    return note;
}

void bindOptional(SQLite::Statement& statement, int index, const std::optional<std::string>& text) {
    if (text) {
        statement.bind(index, *text);
    } else {
        statement.bind(index);
    }
}

std::string jsonOf(const std::vector<std::string>& tags) {
    return boost::json::serialize(boost::json::value_from(tags));
}

} // namespace

bool Notebook::hasNotes(std::int64_t account) {
    const ServerModel::Access database(model_);
    SQLite::Statement query(*database, "SELECT 1 FROM notes WHERE account = ? LIMIT 1");
    query.bind(1, account);
    return query.executeStep();
}

std::vector<NoteRecord> Notebook::notes(std::int64_t account) {
    const ServerModel::Access database(model_);
    SQLite::Statement query(*database, std::string(columns) + "ORDER BY changed DESC, id DESC");
    query.bind(1, account);
    std::vector<NoteRecord> notes;
    while (query.executeStep()) {
        notes.push_back(readNote(query));
    }
    return notes;
}

void Notebook::add(std::int64_t account, std::span<const NoteRecord> notes) {
    const ServerModel::Access database(model_);
    SQLite::Transaction transaction(*database);
    SQLite::Statement insert(*database,
                             "INSERT INTO notes(account, remoteID, problem, savedFrom, topic, notes, tags, "
                             "isFavorite, changed, url, graph, graphID) "
                             "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) "
                             "ON CONFLICT(account, problem) DO UPDATE SET savedFrom = excluded.savedFrom, "
                             "topic = excluded.topic, changed = excluded.changed, url = excluded.url, "
                             "graph = excluded.graph, graphID = excluded.graphID");
    for (const NoteRecord& note : notes) {
        insert.bind(1, account);
        insert.bind(2, randomText(identifierBytes));
        insert.bind(3, note.problem);
        insert.bind(4, note.savedFrom);
        insert.bind(5, note.topic);
        insert.bind(6, note.notes);
        insert.bind(7, jsonOf(note.tags));
        insert.bind(8, note.isFavorite ? 1 : 0);
        insert.bind(9, note.lastChange != 0 ? note.lastChange : model_.nowSeconds());
        bindOptional(insert, 10, note.url);
        bindOptional(insert, 11, note.graph);
        bindOptional(insert, 12, note.graphID);
        insert.exec();
        insert.reset();
    }
    transaction.commit();
}

bool Notebook::setFavorite(std::int64_t account, const std::string& problem, bool favorite) {
    const ServerModel::Access database(model_);
    SQLite::Statement update(*database, "UPDATE notes SET isFavorite = ? WHERE account = ? AND problem = ?");
    update.bind(1, favorite ? 1 : 0);
    update.bind(2, account);
    update.bind(3, problem);
    return update.exec() != 0;
}

bool Notebook::setNotes(std::int64_t account, const std::string& problem, const std::string& text) {
    const ServerModel::Access database(model_);
    SQLite::Statement update(*database,
                             "UPDATE notes SET notes = ?, changed = ? WHERE account = ? AND problem = ?");
    update.bind(1, text);
    update.bind(2, model_.nowSeconds());
    update.bind(3, account);
    update.bind(4, problem);
    return update.exec() != 0;
}

bool Notebook::setTags(std::int64_t account, const std::string& problem,
                       const std::vector<std::string>& tags) {
    const ServerModel::Access database(model_);
    SQLite::Statement update(*database,
                             "UPDATE notes SET tags = ?, changed = ? WHERE account = ? AND problem = ?");
    update.bind(1, jsonOf(tags));
    update.bind(2, model_.nowSeconds());
    update.bind(3, account);
    update.bind(4, problem);
    return update.exec() != 0;
}

std::optional<NoteRecord> Notebook::graph(std::int64_t account, const std::string& graphID) {
    const ServerModel::Access database(model_);
    SQLite::Statement query(*database, std::string(columns) + "AND graphID = ?");
    query.bind(1, account);
    query.bind(2, graphID);
    if (!query.executeStep()) {
        return std::nullopt;
    }
    return readNote(query);
}

void Notebook::remove(std::int64_t account, std::span<const std::string> problems) {
    const ServerModel::Access database(model_);
    SQLite::Transaction transaction(*database);
    SQLite::Statement erase(*database, "DELETE FROM notes WHERE account = ? AND problem = ?");
    for (const std::string& problem : problems) {
        erase.bind(1, account);
        erase.bind(2, problem);
        erase.exec();
        erase.reset();
    }
    transaction.commit();
}

void Notebook::clear(std::int64_t account) {
    const ServerModel::Access database(model_);
    SQLite::Statement erase(*database, "DELETE FROM notes WHERE account = ?");
    erase.bind(1, account);
    erase.exec();
}

} // namespace teralune::service
