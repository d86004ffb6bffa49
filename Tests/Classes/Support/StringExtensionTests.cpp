#include "Classes/Utils/StringExtension.h"

#include "Classes/Utils/SafeSubscript.h"
#include "Tests/Support/RecordingPrinter.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

TEST(StringExtension, finds_and_replaces_by_pattern) {
    using Matches = std::vector<std::vector<std::string>>;
    EXPECT_EQ(matchingStrings("a1 é", R"((\p{L})(\d+)?)"), (Matches{{"a1", "a", "1"}, {"é", "é", ""}}));
    EXPECT_EQ(matchingStrings("abc", "("), Matches());
    EXPECT_EQ(replace("x1+x2", R"(x(\d))", "[$1]"), "[1]+[2]");
    EXPECT_EQ(replace("x1+x2", "[", "y"), "x1+x2");
    EXPECT_EQ(replace("a-b", "-", R"($ ${x} \$1 \u00e9 \\ \)"), R"(a$ ${x} $1 u00e9 \ \b)");
}

TEST(StringExtension, truncates_by_the_characters_that_a_reader_sees) {
    EXPECT_EQ(truncate("abcde", 5, "..."), "abcde");
    EXPECT_EQ(truncate("abcdef", 5, "..."), "abcde...");
    EXPECT_EQ(truncate("a\r\nb", 2, "..."), "a\r\n...");
    EXPECT_EQ(truncate("e\u0301🇪🇸x", 2, "..."), "e\u0301🇪🇸...");
    EXPECT_EQ(truncate("👩‍👩‍👧é👍🏽", 3, "..."), "👩‍👩‍👧é👍🏽");
}

TEST(StringExtension, parses_json_and_prints_why_it_could_not) {
    RecordingPrinter printer;
    EXPECT_EQ(parseJSONString(R"( {"a":["é"]} )", printer)->at("a").at(0), "é");
    for (const char* text : {"", "{", "[1] x", "\"\xff\""})
        EXPECT_FALSE(parseJSONString(text, printer)) << text;
    EXPECT_EQ(printer.takeLines().size(), 4U);
}

TEST(SafeSubscript, answers_any_index) {
    const std::vector<int> numbers = {7, 8};
    EXPECT_EQ(*safeSubscript(numbers, 1), 8);
    EXPECT_EQ(safeSubscript(numbers, -1), nullptr);
    EXPECT_EQ(safeSubscript(numbers, 2), nullptr);
}

} // namespace
} // namespace teralune
