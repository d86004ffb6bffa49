#include "Platform/Database/Database.h"
#include "Platform/Database/DatabaseError.h"
#include "Platform/Database/PrivateFile.h"
#include "Platform/Database/Transaction.h"
#include "Platform/Defaults/SqliteUserDefaults.h"
#include "Platform/Foundation/FileDescriptor.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace teralune {
namespace {

using std::filesystem::perms;

class DatabaseTests : public testing::Test {
protected:
    Result<Database> open(Database::Access access = Database::Access::readWrite) {
        return Database::open({.file = file_, .access = access, .busyTimeout = std::chrono::milliseconds(0)});
    }
    Database opened() {
        Result<Database> database = open();
        EXPECT_TRUE(database) << (database ? "" : database.error().localizedDescription);
        return std::move(database).value();
    }

    const TemporaryFolder temporary_;
    const std::filesystem::path folder_ = temporary_.path();
    const std::filesystem::path file_ = folder_ / "deep" / "down" / "store.sqlite";
};

TEST_F(DatabaseTests, texts_come_back_byte_for_byte_and_an_empty_one_is_not_absent) {
    Database database = opened();
    ASSERT_TRUE(database.execute("CREATE TABLE texts(id INTEGER PRIMARY KEY, value TEXT)"));
    const std::vector<std::optional<std::string>> values{std::string("a\0b", 3), "", std::nullopt,
                                                         "\xF0\x9F\x90\xA2", std::string(1 << 20, 'x')};
    for (const auto& value : values) {
        ASSERT_TRUE(database.statement("INSERT INTO texts(value) VALUES (?)").bindAll(value).run());
    }
    std::vector<std::optional<std::string>> read;
    Statement query = database.statement("SELECT value FROM texts ORDER BY id");
    while (query.nextRow()) {
        read.push_back(query.optionalString(0));
    }
    EXPECT_EQ(read, values);
    Statement empty = database.statement("SELECT ? IS NOT NULL");
    EXPECT_TRUE(empty.bindAll(std::string_view()).nextRow() && empty.integer(0) == 1);
}

TEST_F(DatabaseTests, the_same_sql_can_be_in_use_twice_at_once) {
    Database database = opened();
    const std::string_view sql = "SELECT value FROM (SELECT 1 AS value UNION SELECT 2) ORDER BY value";
    std::vector<std::pair<std::int64_t, std::int64_t>> pairs;
    Statement outer = database.statement(sql);
    while (outer.nextRow()) {
        Statement inner = database.statement(sql);
        while (inner.nextRow()) {
            pairs.emplace_back(outer.integer(0), inner.integer(0));
        }
    }
    EXPECT_EQ(pairs, (std::vector<std::pair<std::int64_t, std::int64_t>>{{1, 1}, {1, 2}, {2, 1}, {2, 2}}));
}

TEST_F(DatabaseTests, a_statement_that_failed_stays_failed_and_says_why) {
    Database database = opened();
    ASSERT_TRUE(database.execute("CREATE TABLE numbers(value INTEGER NOT NULL)"));
    for (const char* sql :
         {"SELECT nonsense(", "INSERT INTO nowhere VALUES (?)", "INSERT INTO numbers VALUES (NULL)"}) {
        Statement statement = database.statement(sql);
        EXPECT_FALSE(statement.nextRow()) << sql;
        EXPECT_FALSE(statement.run()) << sql;
        ASSERT_FALSE(statement.result()) << sql;
        EXPECT_EQ(statement.result().error().domain, databaseErrorDomain);
        EXPECT_NE(statement.result().error().localizedDescription, "") << sql;
    }
    Statement outOfRange = database.statement("INSERT INTO numbers VALUES (?)");
    outOfRange.bind(2, 5);
    EXPECT_FALSE(outOfRange.run());
}

TEST_F(DatabaseTests, only_what_was_committed_stays) {
    Database database = opened();
    ASSERT_TRUE(database.execute("CREATE TABLE numbers(value INTEGER PRIMARY KEY)"));
    const auto begin = [&] { return Transaction::begin(database, Transaction::Kind::writing).value(); };
    {
        const Transaction dropped = begin();
        ASSERT_TRUE(database.execute("INSERT INTO numbers VALUES (1)"));
    }
    Transaction kept = begin();
    ASSERT_TRUE(database.execute("INSERT INTO numbers VALUES (2)"));
    EXPECT_TRUE(kept.commit());
    EXPECT_FALSE(kept.isOpen());
    Transaction lost = begin();
    ASSERT_TRUE(database.execute("INSERT INTO numbers VALUES (3)"));
    // SQLite rolls all of it back here, so that going on would write outside any transaction.
    ASSERT_FALSE(database.execute("INSERT OR ROLLBACK INTO numbers VALUES (2)"));
    EXPECT_FALSE(lost.isOpen());
    EXPECT_FALSE(lost.commit());
    EXPECT_EQ(database.integer("SELECT group_concat(value) FROM numbers").value(), 2);
}

TEST_F(DatabaseTests, a_reader_sees_the_last_committed_state_while_another_writes) {
    Database writer = opened();
    ASSERT_TRUE(writer.hasWriteAheadLog());
    ASSERT_TRUE(writer.execute("CREATE TABLE numbers(value INTEGER); INSERT INTO numbers VALUES (1)"));
    Database reader = std::move(open(Database::Access::readOnly)).value();
    Result<Transaction> transaction = Transaction::begin(writer, Transaction::Kind::writing);
    ASSERT_TRUE(transaction);
    ASSERT_TRUE(writer.execute("INSERT INTO numbers VALUES (2)"));
    EXPECT_EQ(reader.integer("SELECT count(*) FROM numbers").value(), 1);
    EXPECT_FALSE(reader.execute("INSERT INTO numbers VALUES (3)"));
    Database second = opened();
    EXPECT_FALSE(Transaction::begin(second, Transaction::Kind::writing)) << "the lock is held";
    ASSERT_TRUE(transaction.value().commit());
    EXPECT_EQ(reader.integer("SELECT count(*) FROM numbers").value(), 2);
}

TEST_F(DatabaseTests, making_a_file_private_keeps_the_locks_that_the_process_holds_on_it) {
    ASSERT_TRUE(makePrivateFile(file_));
    for (const auto& made : {file_.parent_path(), file_.parent_path().parent_path()}) {
        EXPECT_EQ(std::filesystem::status(made).permissions(), perms::owner_all) << made;
    }
    std::filesystem::permissions(file_, perms::owner_all);
    const FileDescriptor holder(::open(file_.c_str(), O_RDWR | O_CLOEXEC));
    struct flock lock {};
    lock.l_type = F_WRLCK;
    ASSERT_EQ(fcntl(holder.get(), F_SETLK, &lock), 0);
    ASSERT_TRUE(makePrivateFile(file_));
    EXPECT_EQ(std::filesystem::status(file_).permissions(), perms::owner_read | perms::owner_write);
    const FileDescriptor stranger(::open(file_.c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_EQ(fcntl(stranger.get(), F_OFD_GETLK, &lock), 0);
    EXPECT_EQ(lock.l_type, F_WRLCK);
}

TEST_F(DatabaseTests, settings_that_are_up_to_date_open_while_another_process_writes) {
    ASSERT_TRUE(SqliteUserDefaults::open(file_));
    Database other = opened();
    const Result<Transaction> lock = Transaction::begin(other, Transaction::Kind::writing);
    ASSERT_TRUE(lock);
    EXPECT_TRUE(SqliteUserDefaults::open(file_));
}

TEST_F(DatabaseTests, nothing_is_made_behind_a_link_or_for_a_reader) {
    std::filesystem::create_directories(file_.parent_path());
    std::filesystem::create_symlink(folder_ / "elsewhere", file_);
    EXPECT_FALSE(open());
    EXPECT_FALSE(std::filesystem::exists(folder_ / "elsewhere"));
    std::filesystem::remove(file_);
    EXPECT_FALSE(open(Database::Access::readOnly));
}

} // namespace
} // namespace teralune
