#include "SolverService/Model/SharedLists.h"

#include "SolverService/Model/RandomText.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <boost/json.hpp>

#include <algorithm>

namespace teralune::service {

namespace {

constexpr int identifierBytes = 8;

boost::json::value optionalJson(const std::optional<std::string>& text) {
    return text ? boost::json::value(*text) : boost::json::value();
}

std::optional<std::string> optionalText(const boost::json::value& value) {
    if (!value.is_string()) {
        return std::nullopt;
    }
    return boost::json::value_to<std::string>(value);
}

boost::json::value storedNote(const NoteRecord& note) {
    return {{"id", note.remoteID},
            {"problem", note.problem},
            {"savedFrom", note.savedFrom},
            {"topic", note.topic},
            {"notes", note.notes},
            {"tags", boost::json::value_from(note.tags)},
            {"lastChange", note.lastChange},
            {"url", optionalJson(note.url)},
            {"graph", optionalJson(note.graph)}};
}

NoteRecord readNote(const boost::json::value& stored) {
    NoteRecord note;
    note.remoteID = boost::json::value_to<std::string>(stored.at("id"));
    note.problem = boost::json::value_to<std::string>(stored.at("problem"));
    note.savedFrom = boost::json::value_to<std::string>(stored.at("savedFrom"));
    note.topic = boost::json::value_to<std::string>(stored.at("topic"));
    note.notes = boost::json::value_to<std::string>(stored.at("notes"));
    note.tags = boost::json::value_to<std::vector<std::string>>(stored.at("tags"));
    note.lastChange = boost::json::value_to<std::int64_t>(stored.at("lastChange"));
    note.url = optionalText(stored.at("url"));
    note.graph = optionalText(stored.at("graph"));
    return note;
}

} // namespace

std::string SharedLists::share(const std::string& name, std::span<const NoteRecord> notes) {
    std::string identifier = randomText(identifierBytes);
    boost::json::array stored;
    for (NoteRecord note : notes) {
        note.remoteID = randomText(identifierBytes);
        note.lastChange = note.lastChange != 0 ? note.lastChange : model_.nowSeconds();
        stored.push_back(storedNote(note));
    }
    const ServerModel::Access database(model_);
    SQLite::Statement insert(*database, "INSERT INTO lists(id, name, notes) VALUES(?, ?, ?)");
    insert.bind(1, identifier);
    insert.bind(2, name);
    insert.bind(3, boost::json::serialize(stored));
    insert.exec();
    return identifier;
}

std::optional<SharedList> SharedLists::list(const std::string& identifier) {
    const ServerModel::Access database(model_);
    SQLite::Statement query(*database, "SELECT name, notes FROM lists WHERE id = ?");
    query.bind(1, identifier);
    if (!query.executeStep()) {
        return std::nullopt;
    }
    SharedList list;
    list.name = query.getColumn(0).getString();
    const boost::json::value stored = boost::json::parse(query.getColumn(1).getString());
    for (const boost::json::value& note : stored.as_array()) {
        list.notes.push_back(readNote(note));
    }
    return list;
}

ListSaving SharedLists::save(const std::string& identifier, std::int64_t account) {
    std::optional<SharedList> shared = list(identifier);
    if (!shared) {
        return ListSaving::noSuchList;
    }
    {
        const ServerModel::Access database(model_);
        SQLite::Statement insert(*database, "INSERT INTO savedLists(account, list) SELECT ?1, ?2 "
                                            "WHERE (SELECT count(*) FROM savedLists WHERE account = ?1) < ?3 "
                                            "ON CONFLICT DO NOTHING");
        insert.bind(1, account);
        insert.bind(2, identifier);
        insert.bind(3, savedLimit_);
        insert.exec();
        SQLite::Statement query(*database, "SELECT 1 FROM savedLists WHERE account = ? AND list = ?");
        query.bind(1, account);
        query.bind(2, identifier);
        if (!query.executeStep()) {
            return ListSaving::limitReached;
        }
    }
    for (NoteRecord& note : shared->notes) {
        if (std::find(note.tags.begin(), note.tags.end(), shared->name) == note.tags.end()) {
            note.tags.push_back(shared->name);
        }
        note.lastChange = 0;
    }
    notebook_.add(account, shared->notes);
    return ListSaving::saved;
}

} // namespace teralune::service
