#include "SolverService/Model/AccountRules.h"
#include "SolverService/Model/Accounts.h"
#include "SolverService/Model/PasswordDigest.h"
#include "SolverService/Model/RandomText.h"

#include <SQLiteCpp/SQLiteCpp.h>

namespace teralune::service {

namespace {

Result<void> storePassword(SQLite::Database& database, std::int64_t id, const std::string& email,
                           const std::string& digest) {
    SQLite::Statement update(database, "UPDATE OR IGNORE accounts SET email = ?, password = ? WHERE id = ?");
    update.bind(1, email);
    update.bind(2, digest.data(), static_cast<int>(digest.size()));
    update.bind(3, id);
    if (update.exec() == 0) {
        return refusal("This email address is already registered.");
    }
    return {};
}

} // namespace

std::optional<std::string> Accounts::passwordDigest(std::int64_t id) {
    const ServerModel::Access database(model_);
    SQLite::Statement query(*database, "SELECT password FROM accounts WHERE id = ?");
    query.bind(1, id);
    if (!query.executeStep() || query.getColumn(0).isNull()) {
        return std::nullopt;
    }
    return query.getColumn(0).getString();
}

Result<void> Accounts::changeEmail(std::int64_t id, const std::string& email, const std::string& password,
                                   const std::string& confirmation) {
    if (!looksLikeEmail(email)) {
        return refusal("Please enter a valid email address.");
    }
    std::optional<std::string> digest = passwordDigest(id);
    if (digest) {
        if (!passwordMatches(password, *digest)) {
            return refusal("The current password is not correct.");
        }
    } else {
        if (Result<void> acceptable = checkNewPassword(password, confirmation); !acceptable) {
            return acceptable;
        }
        digest = digestPassword(password);
    }
    const ServerModel::Access database(model_);
    return storePassword(*database, id, email, *digest);
}

Result<void> Accounts::changePassword(std::int64_t id, const std::string& current,
                                      const std::string& password, const std::string& confirmation) {
    const std::optional<std::string> digest = passwordDigest(id);
    if (!passwordMatches(current, digest.value_or(std::string()))) {
        return refusal("The current password is not correct.");
    }
    if (Result<void> acceptable = checkNewPassword(password, confirmation); !acceptable) {
        return acceptable;
    }
    const std::string email = account(id).email.value_or(std::string());
    const std::string changed = digestPassword(password);
    const ServerModel::Access database(model_);
    return storePassword(*database, id, email, changed);
}

std::int64_t Accounts::signInWithIdentity(const std::string& identity,
                                          const std::optional<std::string>& email,
                                          const std::string& firstName, const std::string& lastName) {
    const ServerModel::Access database(model_);
    // The provider has checked the address, so an account that has it is the same person's.
    SQLite::Statement link(*database,
                           "UPDATE accounts SET identity = ?1 WHERE email = ?2 AND identity IS NULL "
                           "AND NOT EXISTS(SELECT 1 FROM accounts WHERE identity = ?1)");
    link.bind(1, identity);
    link.bind(2, email.value_or(std::string()));
    link.exec();
    SQLite::Statement insert(*database,
                             "INSERT INTO accounts(connected, email, identity, firstName, lastName, "
                             "registered) SELECT ?1, NULL, ?2, ?3, ?4, ?5 WHERE NOT EXISTS("
                             "SELECT 1 FROM accounts WHERE identity = ?2)");
    insert.bind(1, randomText(accountIdentifierBytes));
    insert.bind(2, identity);
    insert.bind(3, firstName);
    insert.bind(4, lastName);
    insert.bind(5, model_.nowSeconds());
    if (insert.exec() != 0 && email) {
        SQLite::Statement adopt(*database, "UPDATE OR IGNORE accounts SET email = ? WHERE identity = ?");
        adopt.bind(1, *email);
        adopt.bind(2, identity);
        adopt.exec();
    }
    SQLite::Statement query(*database, "SELECT id FROM accounts WHERE identity = ?");
    query.bind(1, identity);
    query.executeStep();
    return query.getColumn(0).getInt64();
}

void Accounts::disable(std::int64_t id) {
    const ServerModel::Access database(model_);
    // The address and the identity become free again; nothing signs in to what is left.
    SQLite::Statement update(*database, "UPDATE accounts SET disabled = 1, email = NULL, identity = NULL, "
                                        "password = NULL WHERE id = ?");
    update.bind(1, id);
    update.exec();
}

} // namespace teralune::service
