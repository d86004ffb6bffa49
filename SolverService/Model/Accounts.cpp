#include "SolverService/Model/Accounts.h"

#include "SolverService/Model/AccountRules.h"
#include "SolverService/Model/PasswordDigest.h"
#include "SolverService/Model/RandomText.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <boost/json.hpp>

#include <algorithm>
#include <charconv>

namespace teralune::service {

namespace {

constexpr int mostDecimals = 10;
constexpr std::size_t mostDismissed = 200;

std::vector<std::string> textsOf(const std::string& json) {
    return boost::json::value_to<std::vector<std::string>>(boost::json::parse(json));
}

} // namespace

Result<std::int64_t> Accounts::signUp(const std::string& email, const std::string& firstName,
                                      const std::string& lastName, const std::string& password) {
    if (!looksLikeEmail(email)) {
        return refusal("Please enter a valid email address.");
    }
    if (const Result<void> acceptable = checkNewPassword(password, password); !acceptable) {
        return acceptable.error();
    }
    if (firstName.size() > longestName || lastName.size() > longestName) {
        return refusal("The name is too long.");
    }
    const std::string digest = digestPassword(password);
    const ServerModel::Access database(model_);
    SQLite::Statement insert(*database,
                             "INSERT INTO accounts(connected, email, firstName, lastName, password, "
                             "registered) VALUES(?, ?, ?, ?, ?, ?) ON CONFLICT DO NOTHING");
    insert.bind(1, randomText(accountIdentifierBytes));
    insert.bind(2, email);
    insert.bind(3, firstName);
    insert.bind(4, lastName);
    insert.bind(5, digest.data(), static_cast<int>(digest.size()));
    insert.bind(6, model_.nowSeconds());
    if (insert.exec() == 0) {
        return refusal("This email address is already registered.");
    }
    return (*database).getLastInsertRowid();
}

Result<std::int64_t> Accounts::signIn(const std::string& email, const std::string& password) {
    std::int64_t id = 0;
    std::string digest;
    {
        const ServerModel::Access database(model_);
        SQLite::Statement query(*database,
                                "SELECT id, password FROM accounts WHERE email = ? AND disabled = 0");
        query.bind(1, email);
        if (query.executeStep()) {
            id = query.getColumn(0).getInt64();
            digest = query.getColumn(1).getString();
        }
    }
    if (!passwordMatches(password, digest)) {
        return refusal("The email address or the password is not correct.");
    }
    return id;
}

std::optional<std::int64_t> Accounts::idOf(const std::string& email) {
    const ServerModel::Access database(model_);
    SQLite::Statement query(*database, "SELECT id FROM accounts WHERE email = ? AND disabled = 0");
    query.bind(1, email);
    if (!query.executeStep()) {
        return std::nullopt;
    }
    return query.getColumn(0).getInt64();
}

Account Accounts::account(std::int64_t id) {
    const ServerModel::Access database(model_);
    SQLite::Statement query(*database, "SELECT connected, email, firstName, lastName, registered, "
                                       "numDecimalDisplay, steps, dismissed, password IS NOT NULL "
                                       "FROM accounts WHERE id = ?");
    query.bind(1, id);
    query.executeStep();
    Account account;
    account.id = id;
    account.connected = query.getColumn(0).getString();
    if (!query.getColumn(1).isNull()) {
        account.email = query.getColumn(1).getString();
    }
    account.firstName = query.getColumn(2).getString();
    account.lastName = query.getColumn(3).getString();
    account.registered = query.getColumn(4).getInt64();
    account.numDecimalDisplay = query.getColumn(5).getInt();
    account.steps = query.getColumn(6).getString();
    account.dismissedNotifications = textsOf(query.getColumn(7).getString());
    account.hasPassword = query.getColumn(8).getInt() != 0;
    return account;
}

Result<void> Accounts::setField(std::int64_t id, const std::string& path, const std::string& value) {
    std::string column = path;
    if (path == "firstName" || path == "lastName") {
        if (value.size() > longestName) {
            return refusal("The name is too long.");
        }
    } else if (path == "email") {
        if (!looksLikeEmail(value)) {
            return refusal("Please enter a valid email address.");
        }
    } else if (path == "settings.numDecimalDisplay") {
        int decimals = 0;
        const auto [end, problem] = std::from_chars(value.data(), value.data() + value.size(), decimals);
        if (problem != std::errc() || end != value.data() + value.size() || decimals < 0 ||
            decimals > mostDecimals) {
            return refusal("The number of decimals must be between 0 and 10.");
        }
        column = "numDecimalDisplay";
    } else if (path == "settings.steps") {
        if (value != "showSteps" && value != "hideSteps" && value != "stepByStep") {
            return refusal("There is no such way to show steps.");
        }
        column = "steps";
    } else {
        return refusal("There is no such field.");
    }
    const ServerModel::Access database(model_);
    // The column is one of the five names above, never the client's text.
    SQLite::Statement update(*database, "UPDATE OR IGNORE accounts SET " + column + " = ? WHERE id = ?");
    update.bind(1, value);
    update.bind(2, id);
    if (update.exec() == 0) {
        return refusal("This email address is already registered.");
    }
    return {};
}

void Accounts::dismiss(std::int64_t id, const std::string& notification) {
    std::vector<std::string> dismissed = account(id).dismissedNotifications;
    if (dismissed.size() >= mostDismissed ||
        std::find(dismissed.begin(), dismissed.end(), notification) != dismissed.end()) {
        return;
    }
    dismissed.push_back(notification);
    const ServerModel::Access database(model_);
    SQLite::Statement update(*database, "UPDATE accounts SET dismissed = ? WHERE id = ?");
    update.bind(1, boost::json::serialize(boost::json::value_from(dismissed)));
    update.bind(2, id);
    update.exec();
}

} // namespace teralune::service
