#include "Platform/Defaults/SqliteUserDefaults.h"

#include "Platform/Database/Database.h"
#include "Platform/Database/Statement.h"
#include "Platform/Database/Transaction.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Foundation/Utf8.h"

#include <cerrno>
#include <map>
#include <mutex>
#include <new>
#include <string>
#include <utility>

namespace teralune {

namespace {

using Value = UserDefaults::Value;
/// No value stands for a setting that is not there.
using Values = std::map<std::string, std::optional<Value>, std::less<>>;

/// How a row's value is to be read. The numbers are on disk.
enum class ValueType : std::int64_t { text = 0, integer = 1, boolean = 2, date = 3, array = 4 };

constexpr std::int64_t applicationID = 0x54555344;
constexpr std::int64_t newestVersion = 1;

enum class OpenFailure : std::int64_t { somethingElse = 1, madeByNewerVersion = 2, damaged = 3 };

Error openError(OpenFailure failure, const std::filesystem::path& file, const std::string& reason) {
    return {"UserDefaultsErrorDomain", static_cast<std::int64_t>(failure), file.string() + ": " + reason, {}};
}

/// Its texts lie within the strings: it takes no memory.
Error outOfMemoryError() noexcept {
    return {"UserDefaults", ENOMEM, "Out of memory.", {}};
}

/// A row as it is stored: the type, and the number or the text.
struct StoredValue {
    ValueType type = ValueType::text;
    std::optional<std::int64_t> number;
    std::optional<std::string> text;
};

StoredValue stored(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        return {ValueType::text, std::nullopt, *text};
    }
    if (const auto* number = std::get_if<std::int64_t>(&value)) {
        return {ValueType::integer, *number, std::nullopt};
    }
    if (const auto* boolean = std::get_if<bool>(&value)) {
        return {ValueType::boolean, *boolean ? 1 : 0, std::nullopt};
    }
    if (const auto* date = std::get_if<Date>(&value)) {
        return {ValueType::date, date->time_since_epoch().count(), std::nullopt};
    }
    // One broken byte in one text would make the whole array unreadable.
    return {ValueType::array, std::nullopt,
            replacingInvalidUtf8(serializeJson(std::get<boost::json::array>(value)))};
}

/// No value for a row that this version doesn't understand.
std::optional<Value> readValue(Statement& row, int typeColumn, int valueColumn) {
    switch (static_cast<ValueType>(row.integer(typeColumn))) {
    case ValueType::text:
        return Value(std::string(row.text(valueColumn)));
    case ValueType::integer:
        return Value(row.integer(valueColumn));
    case ValueType::boolean:
        return Value(row.integer(valueColumn) != 0);
    case ValueType::date:
        return Value(Date(std::chrono::milliseconds(row.integer(valueColumn))));
    case ValueType::array: {
        Result<boost::json::value> parsed = parseJson(row.text(valueColumn));
        if (parsed && parsed.value().is_array()) {
            return Value(std::move(parsed.value().get_array()));
        }
        return std::nullopt;
    }
    }
    return std::nullopt;
}

Result<void> checkIntegrity(Database& database, const std::filesystem::path& file) {
    Statement check = database.statement("PRAGMA quick_check(1)", Database::Reuse::once);
    if (check.nextRow() && check.text(0) == "ok") {
        return {};
    }
    const Result<void> result = check.result();
    return result ? Result<void>(openError(OpenFailure::damaged, file, "The settings are damaged.")) : result;
}

/// What a file says of itself.
struct Header {
    std::int64_t version = 0;
    std::int64_t owner = 0;
    std::int64_t tables = 0;

    static Result<Header> read(Database& database) {
        const Result<std::int64_t> version = database.integer("PRAGMA user_version");
        const Result<std::int64_t> owner = database.integer("PRAGMA application_id");
        const Result<std::int64_t> tables = database.integer("SELECT count(*) FROM sqlite_schema");
        for (const auto* read : {&version, &owner, &tables}) {
            if (!*read) {
                return read->error();
            }
        }
        return Header{version.value(), owner.value(), tables.value()};
    }
    bool isCurrent() const { return owner == applicationID && version == newestVersion; }
    bool isNew() const { return version == 0 && owner == 0 && tables == 0; }
};

Result<void> migrate(Database& database, const std::filesystem::path& file) {
    // Only a file that has to be changed needs the write lock, which another process may hold for long.
    if (const Result<Header> header = Header::read(database); !header) {
        return header.error();
    } else if (header.value().isCurrent()) {
        return {};
    }
    Result<Transaction> transaction = Transaction::begin(database, Transaction::Kind::writing);
    if (!transaction) {
        return transaction.error();
    }
    const Result<Header> header = Header::read(database);
    if (!header) {
        return header.error();
    }
    const bool isNew = header.value().isNew();
    if (!isNew && header.value().owner != applicationID) {
        return openError(OpenFailure::somethingElse, file, "The file holds something else than settings.");
    }
    if (header.value().version > newestVersion) {
        return openError(OpenFailure::madeByNewerVersion, file,
                         "The settings were written by a newer version.");
    }
    if (isNew) {
        Result<void> made = database.execute(
            "CREATE TABLE settings (key TEXT PRIMARY KEY NOT NULL, type INTEGER NOT NULL, value NOT NULL)"
            " WITHOUT ROWID;"
            "PRAGMA application_id=" +
            std::to_string(applicationID) + "; PRAGMA user_version=" + std::to_string(newestVersion));
        if (!made) {
            return made;
        }
    }
    return transaction.value().commit();
}

} // namespace

struct SqliteUserDefaults::State {
    State(Database&& opened, FailureReporter reporter)
        : database(std::move(opened))
        , onFailure(std::move(reporter)) {}

    std::mutex mutex;
    Database database;
    FailureReporter onFailure;
    /// What the file held at this data version, and over it what could not be written yet.
    std::int64_t dataVersion = -1;
    Values values;
    Values unsaved;
    /// A disk that fails would otherwise be reported at each read.
    bool readFailed = false;

    /// Reads the file again if another process has written to it. Keeps what is in memory after a failure.
    Result<void> refresh() {
        const Result<std::int64_t> version = database.integer("PRAGMA data_version");
        if (!version) {
            return version.error();
        }
        if (version.value() == dataVersion) {
            return {};
        }
        Values read;
        Statement rows = database.statement("SELECT key, type, value FROM settings");
        while (rows.nextRow()) {
            if (std::optional<Value> value = readValue(rows, 1, 2)) {
                read.insert_or_assign(std::string(rows.text(0)), std::move(*value));
            }
        }
        if (Result<void> result = rows.result(); !result) {
            return result;
        }
        values = std::move(read);
        dataVersion = version.value();
        return {};
    }

    Result<void> writeUnsaved() {
        if (unsaved.empty()) {
            return {};
        }
        if (Result<void> ended = Transaction::rollBackAbandoned(database); !ended) {
            return ended;
        }
        Result<Transaction> transaction = Transaction::begin(database, Transaction::Kind::writing);
        if (!transaction) {
            return transaction.error();
        }
        for (const auto& [key, value] : unsaved) {
            if (Result<void> written = value ? write(key, stored(*value)) : erase(key); !written) {
                return written;
            }
        }
        if (Result<void> committed = transaction.value().commit(); !committed) {
            return committed;
        }
        // Takes no memory, for want of which a setting would be on disk and not here.
        while (!unsaved.empty()) {
            Values::node_type written = unsaved.extract(unsaved.begin());
            values.erase(written.key());
            values.insert(std::move(written));
        }
        return {};
    }

    Result<void> write(const std::string& key, const StoredValue& value) {
        Statement statement = database.statement("INSERT INTO settings (key, type, value) VALUES (?, ?, ?)"
                                                 " ON CONFLICT (key) DO UPDATE"
                                                 " SET type = excluded.type, value = excluded.value");
        statement.bind(1, std::string_view(key));
        statement.bind(2, static_cast<std::int64_t>(value.type));
        if (value.number) {
            statement.bind(3, *value.number);
        } else {
            statement.bind(3, std::string_view(*value.text));
        }
        return statement.run();
    }

    Result<void> erase(const std::string& key) {
        Statement statement = database.statement("DELETE FROM settings WHERE key = ?");
        statement.bind(1, std::string_view(key));
        return statement.run();
    }

    void change(std::string_view key, std::optional<Value> value) {
        report(attempt([&] {
            unsaved.insert_or_assign(std::string(key), std::move(value));
            return writeUnsaved();
        }));
    }

    /// With the lock held. Want of memory is a failure like any other.
    template<class Work>
    Result<void> attempt(const Work& work) try {
        const std::lock_guard lock(mutex);
        return work();
    } catch (const std::bad_alloc&) {
        return outOfMemoryError();
    }

    void report(const Result<void>& result) const {
        if (!result && onFailure) {
            onFailure(result.error());
        }
    }
};

SqliteUserDefaults::SqliteUserDefaults(std::unique_ptr<State> state) : state_(std::move(state)) {}

SqliteUserDefaults::~SqliteUserDefaults() = default;

Result<std::unique_ptr<SqliteUserDefaults>> SqliteUserDefaults::open(const std::filesystem::path& file,
                                                                     FailureReporter onFailure) try {
    Result<Database> database = Database::open({.file = file});
    if (!database) {
        return database.error();
    }
    // What is there must be whole before anything is written to it.
    Result<void> prepared = checkIntegrity(database.value(), file);
    if (prepared) {
        prepared = database.value().execute("PRAGMA synchronous=FULL");
    }
    if (prepared) {
        prepared = migrate(database.value(), file);
    }
    if (!prepared) {
        return prepared.error();
    }
    auto state = std::make_unique<State>(std::move(database).value(), std::move(onFailure));
    if (const Result<void> read = state->refresh(); !read) {
        return read.error();
    }
    return std::unique_ptr<SqliteUserDefaults>(new SqliteUserDefaults(std::move(state)));
} catch (const std::bad_alloc&) {
    return outOfMemoryError();
}

std::optional<Value> SqliteUserDefaults::value(std::string_view key) const {
    bool isNews = false;
    std::optional<Value> found;
    const Result<void> refreshed = state_->attempt([&] { return state_->refresh(); });
    {
        const std::lock_guard lock(state_->mutex);
        isNews = !std::exchange(state_->readFailed, !refreshed);
        if (const auto pending = state_->unsaved.find(key); pending != state_->unsaved.end()) {
            found = pending->second;
        } else if (const auto saved = state_->values.find(key); saved != state_->values.end()) {
            found = saved->second;
        }
    }
    if (isNews) {
        state_->report(refreshed);
    }
    return found;
}

void SqliteUserDefaults::set(std::string_view key, Value value) {
    state_->change(key, std::move(value));
}

void SqliteUserDefaults::remove(std::string_view key) {
    state_->change(key, std::nullopt);
}

void SqliteUserDefaults::synchronize() {
    state_->report(state_->attempt([this] { return state_->writeUnsaved(); }));
}

} // namespace teralune
