#include "Platform/Database/Database.h"
#include "Platform/Defaults/InMemoryUserDefaults.h"
#include "Platform/Defaults/SqliteUserDefaults.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <thread>

namespace teralune {
namespace {

TEST(UserDefaults, a_value_reads_as_its_own_type_and_a_boolean_and_an_integer_as_each_other) {
    InMemoryUserDefaults defaults;
    defaults.set("text", "words");
    defaults.set("number", std::int64_t(7));
    defaults.set("yes", true);
    EXPECT_EQ(defaults.integer("number"), 7);
    EXPECT_EQ(defaults.integer("yes"), 1);
    EXPECT_TRUE(defaults.boolean("yes"));
    EXPECT_TRUE(defaults.boolean("number"));
    EXPECT_EQ(defaults.string("number"), std::nullopt);
    EXPECT_EQ(defaults.integer("text"), 0);
    EXPECT_FALSE(defaults.boolean("absent"));
    EXPECT_EQ(defaults.date("number"), std::nullopt);
    EXPECT_EQ(defaults.array("text"), std::nullopt);
    defaults.setOptional("text", std::nullopt);
    EXPECT_EQ(defaults.value("text"), std::nullopt);
    defaults.setOptional("text", "again");
    EXPECT_EQ(defaults.string("text"), "again");
}

class SqliteUserDefaultsTest : public testing::Test {
protected:
    std::unique_ptr<SqliteUserDefaults> open() const {
        auto opened = SqliteUserDefaults::open(
            file_, [](const Error& error) { ADD_FAILURE() << error.localizedDescription; });
        EXPECT_TRUE(opened) << opened.error().localizedDescription;
        return std::move(opened).value();
    }

    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "inner/Settings.sqlite";
};

TEST_F(SqliteUserDefaultsTest, every_type_survives_a_reopening) {
    const std::pair<const char*, UserDefaults::Value> values[] = {
        {"text", "\u05D0 words"},
        {"", std::string("\0\xFF", 2)},
        {"number", std::numeric_limits<std::int64_t>::min()},
        {"no", false},
        {"date", Date(std::chrono::milliseconds(1'500'000'000'123))},
        {"list", boost::json::array{"en", 1, nullptr, {{"k", 0.5}}}},
    };
    {
        const auto defaults = open();
        defaults->set("gone", true);
        for (const auto& [key, value] : values) {
            defaults->set(key, "earlier");
            defaults->set(key, value);
            EXPECT_EQ(defaults->value(key), value);
        }
        defaults->remove("gone");
        defaults->set("broken", boost::json::array{"a\xFF", "b"});
    }
    const auto defaults = open();
    for (const auto& [key, value] : values) {
        EXPECT_EQ(defaults->value(key), value) << key;
    }
    EXPECT_EQ(defaults->value("gone"), std::nullopt);
    EXPECT_EQ(defaults->array("broken"), (boost::json::array{"a\uFFFD", "b"}));
}

TEST_F(SqliteUserDefaultsTest, another_connection_s_change_is_seen_by_the_next_read) {
    const auto one = open();
    const auto other = open();
    one->set("key", "one");
    EXPECT_EQ(other->string("key"), "one");
    other->set("key", "other");
    other->set("added", true);
    one->set("mine", std::int64_t(3));
    EXPECT_EQ(one->string("key"), "other");
    EXPECT_TRUE(one->boolean("added"));
    EXPECT_EQ(other->integer("mine"), 3);
    one->remove("key");
    EXPECT_EQ(other->value("key"), std::nullopt);
}

TEST_F(SqliteUserDefaultsTest, threads_may_read_and_write_at_once) {
    const auto defaults = open();
    std::vector<std::jthread> threads;
    for (int number = 0; number < 3; ++number) {
        threads.emplace_back([&, key = std::to_string(number)] {
            for (std::int64_t count = 1; count <= 20; ++count) {
                defaults->set(key, count);
                EXPECT_EQ(defaults->integer(key), count);
            }
        });
    }
    threads.clear();
    EXPECT_EQ(open()->integer("2"), 20);
}

TEST_F(SqliteUserDefaultsTest, what_is_no_settings_file_is_refused_with_an_error_and_left_alone) {
    open()->set("key", std::string(20'000, 'x'));
    std::ostringstream sound;
    sound << std::ifstream(file_, std::ios::binary).rdbuf();
    std::string damaged = sound.str();
    std::fill(damaged.begin() + 4096, damaged.begin() + 8192, '\x5A');
    const auto text = folder_.write("text", std::string(3000, 'n'));
    std::filesystem::create_directory(folder_.path() / "folder");
    std::filesystem::create_symlink(file_, folder_.path() / "link");
    const auto foreign = folder_.path() / "foreign";
    ASSERT_TRUE(Database::open({.file = foreign}).value().execute("CREATE TABLE settings (other)"));
    ASSERT_TRUE(Database::open({.file = file_}).value().execute("PRAGMA user_version=2"));
    for (const auto& refused : {text, folder_.write("damaged", damaged), foreign, file_,
                                folder_.path() / "folder", folder_.path() / "link", text / "below a file"}) {
        const auto opened = SqliteUserDefaults::open(refused);
        ASSERT_FALSE(opened) << refused;
        EXPECT_FALSE(opened.error().localizedDescription.empty());
    }
    EXPECT_EQ(std::filesystem::file_size(text), 3000U);
}

TEST_F(SqliteUserDefaultsTest, a_write_that_fails_is_reported_kept_in_memory_and_made_good_later) {
    std::vector<std::string> failures;
    auto opened = SqliteUserDefaults::open(
        file_, [&](const Error& error) { failures.push_back(error.localizedDescription); });
    const auto defaults = std::move(opened).value();
    const auto other = open();
    defaults->set("kept", "before");
    auto saboteur = Database::open({.file = file_});
    ASSERT_TRUE(saboteur.value().execute("CREATE TRIGGER refuse BEFORE INSERT ON settings"
                                         " BEGIN SELECT RAISE(FAIL, 'refused'); END"));
    defaults->set("key", "value");
    defaults->remove("kept");
    defaults->synchronize();
    EXPECT_EQ(failures, (std::vector<std::string>{"refused", "refused", "refused"}));
    EXPECT_EQ(defaults->string("key"), "value");
    EXPECT_EQ(defaults->value("kept"), std::nullopt);
    EXPECT_EQ(other->value("key"), std::nullopt);
    EXPECT_EQ(other->string("kept"), "before");
    ASSERT_TRUE(saboteur.value().execute("DROP TRIGGER refuse"));
    defaults->synchronize();
    EXPECT_EQ(failures.size(), 3U);
    EXPECT_EQ(other->string("key"), "value");
    EXPECT_EQ(other->value("kept"), std::nullopt);
}

} // namespace
} // namespace teralune
