#include "Platform/Defaults/InMemoryUserDefaults.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

TEST(UserDefaults, a_value_reads_as_its_own_type_and_a_boolean_and_an_integer_as_each_other) {
    InMemoryUserDefaults defaults;
    const Date date{std::chrono::milliseconds(-5)};
    defaults.set("text", "words");
    defaults.set("number", std::int64_t(7));
    defaults.set("yes", true);
    defaults.set("date", date);
    defaults.set("list", boost::json::array{"en", 1});
    EXPECT_EQ(defaults.string("text"), "words");
    EXPECT_EQ(defaults.integer("number"), 7);
    EXPECT_EQ(defaults.integer("yes"), 1);
    EXPECT_TRUE(defaults.boolean("yes"));
    EXPECT_TRUE(defaults.boolean("number"));
    EXPECT_EQ(defaults.date("date"), date);
    EXPECT_EQ(defaults.array("list"), (boost::json::array{"en", 1}));
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

} // namespace
} // namespace teralune
