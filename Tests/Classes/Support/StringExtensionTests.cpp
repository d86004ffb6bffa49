#include "Classes/Utils/StringExtension.h"

#include "Classes/Utils/SafeSubscript.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Tests/Support/RecordingPrinter.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

TEST(StringExtension, finds_and_replaces_by_pattern) {
    using Matches = std::vector<std::vector<std::string>>;
    EXPECT_EQ(matchingStrings("a1 b é22", R"((\p{L})(\d+)?)"),
              (Matches{{"a1", "a", "1"}, {"b", "b", ""}, {"é22", "é", "22"}}));
    EXPECT_EQ(matchingStrings("abc", "("), Matches());
    EXPECT_EQ(replace("x1+x2", R"(x(\d))", "[$1]"), "[1]+[2]");
    EXPECT_EQ(replace("x1+x2", "[", "y"), "x1+x2");
}

TEST(StringExtension, truncates_by_the_characters_that_a_reader_sees) {
    const std::tuple<const char*, std::size_t, const char*> cases[] = {
        {"abcde", 5, "abcde"},
        {"abcdef", 5, "abcde..."},
        {"", 0, ""},
        {"a", 0, "..."},
        {"שלום עולם", 4, "שלום..."},
        {"👩‍👩‍👧é👍🏽", 3, "👩‍👩‍👧é👍🏽"},
    };
    for (const auto& [text, length, expected] : cases)
        EXPECT_EQ(truncate(text, length, "..."), expected);
}

TEST(StringExtension, parses_json_and_prints_why_it_could_not) {
    RecordingPrinter printer;
    EXPECT_EQ(serializeJson(parseJSONString(R"( {"a":[1,"é"]} )", printer).value()), R"({"a":[1,"é"]})");
    EXPECT_TRUE(printer.takeLines().empty());
    for (const char* text : {"", "{", "[1] x", "\"\xff\""}) {
        EXPECT_FALSE(parseJSONString(text, printer)) << text;
        EXPECT_EQ(printer.takeLines().size(), 1U) << text;
    }
}

TEST(SafeSubscript, answers_any_index) {
    const std::vector<int> numbers = {7, 8};
    EXPECT_EQ(safeSubscript(numbers, -1), nullptr);
    EXPECT_EQ(*safeSubscript(numbers, 1), 8);
    EXPECT_EQ(safeSubscript(numbers, 2), nullptr);
}

} // namespace
} // namespace teralune
