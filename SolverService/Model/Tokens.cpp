#include "SolverService/Model/Tokens.h"

#include "SolverService/Model/PasswordDigest.h"
#include "SolverService/Model/RandomText.h"

#include <SQLiteCpp/SQLiteCpp.h>

namespace teralune::service {

namespace {

constexpr int tokenBytes = 24;

void bindDigest(SQLite::Statement& statement, int index, const std::string& digest) {
    statement.bind(index, digest.data(), static_cast<int>(digest.size()));
}

} // namespace

std::string Tokens::begin(std::optional<std::int64_t> account) {
    std::int64_t session = 0;
    {
        const ServerModel::Access database(model_);
        SQLite::Statement insert(*database, "INSERT INTO sessions(account) VALUES(?)");
        if (account) {
            insert.bind(1, *account);
        }
        insert.exec();
        session = (*database).getLastInsertRowid();
    }
    return issue(session);
}

std::string Tokens::issue(std::int64_t session) {
    std::string token = randomText(tokenBytes);
    const ServerModel::Access database(model_);
    SQLite::Statement insert(*database, "INSERT INTO tokens(digest, session, issued) VALUES(?, ?, ?)");
    bindDigest(insert, 1, digestToken(token));
    insert.bind(2, session);
    insert.bind(3, model_.nowSeconds());
    insert.exec();
    return token;
}

Caller Tokens::use(const std::optional<std::string>& token) {
    return read(token, true);
}

Caller Tokens::look(const std::optional<std::string>& token) {
    return read(token, false);
}

Caller Tokens::read(const std::optional<std::string>& token, bool counts) {
    Caller caller;
    if (!token) {
        return caller;
    }
    const std::string digest = digestToken(*token);
    const ServerModel::Access database(model_);
    // The session of a closed account is nobody's any more.
    SQLite::Statement query(
        *database, "SELECT session, iif(disabled, NULL, account), ended, stale, uses, issued FROM tokens "
                   "JOIN sessions ON sessions.id = session LEFT JOIN accounts ON accounts.id = account "
                   "WHERE digest = ?");
    bindDigest(query, 1, digest);
    if (!query.executeStep() || query.getColumn(2).getInt() != 0) {
        caller.token = TokenState::refused;
        return caller;
    }
    caller.session = query.getColumn(0).getInt64();
    if (!query.getColumn(1).isNull()) {
        caller.account = query.getColumn(1).getInt64();
    }
    const bool worn = lifetime_.requests && query.getColumn(4).getInt64() >= *lifetime_.requests;
    const bool old =
        lifetime_.time && model_.nowSeconds() >= query.getColumn(5).getInt64() + lifetime_.time->count();
    const bool stale = query.getColumn(3).getInt() != 0 || worn || old;
    caller.token = stale ? TokenState::stale : TokenState::valid;
    if (counts && !stale && lifetime_.requests) {
        SQLite::Statement update(*database, "UPDATE tokens SET uses = uses + 1 WHERE digest = ?");
        bindDigest(update, 1, digest);
        update.exec();
    }
    return caller;
}

void Tokens::end(std::int64_t session) {
    const ServerModel::Access database(model_);
    SQLite::Statement update(*database, "UPDATE sessions SET ended = 1 WHERE id = ?");
    update.bind(1, session);
    update.exec();
}

void Tokens::endOthers(std::int64_t account, std::optional<std::int64_t> kept) {
    const ServerModel::Access database(model_);
    SQLite::Statement update(*database, "UPDATE sessions SET ended = 1 WHERE account = ? AND id IS NOT ?");
    update.bind(1, account);
    if (kept) {
        update.bind(2, *kept);
    }
    update.exec();
}

void Tokens::endAll() {
    const ServerModel::Access database(model_);
    (*database).exec("UPDATE sessions SET ended = 1");
}

void Tokens::expireAll() {
    const ServerModel::Access database(model_);
    (*database).exec("UPDATE tokens SET stale = 1");
}

} // namespace teralune::service
