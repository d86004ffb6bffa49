#include "Platform/Foundation/DateFormatter.h"
#include "Platform/Foundation/RegularExpression.h"
#include "Platform/Foundation/StringFormat.h"

#include <gtest/gtest.h>

#include <limits>

namespace teralune {
namespace {

TEST(StringFormat, placeholders_take_their_arguments_in_turn) {
    const std::tuple<std::string, std::vector<FormatArgument>, std::string> cases[] = {
        {"Request to: %@, with %ld", {"url", std::int64_t(7)}, "Request to: url, with 7"},
        {"%@ ... (and %d more)", {"text", std::int64_t(20)}, "text ... (and 20 more)"},
        {"%04d.jpg|%5d|%-5d|%+d|% d",
         {std::int64_t(7), std::int64_t(-7), std::int64_t(7), std::int64_t(7), std::int64_t(7)},
         "0007.jpg|   -7|7    |+7| 7"},
        {"%05d %.3d %u %x %lX %#x",
         {std::int64_t(-42), std::int64_t(5), std::int64_t(-1), std::int64_t(-1), std::int64_t(-1),
          std::int64_t(255)},
         "-0042 005 4294967295 ffffffff FFFFFFFFFFFFFFFF 0xff"},
        {"%@ %@ %@", {std::int64_t(12), 0.5, 2.0}, "12 0.5 2"},
        {"%f %.2f %07.1f %f", {1.5, 2.345, -2.25, std::int64_t(3)}, "1.500000 2.35 -0002.2 3.000000"},
        {"%d %d %s %5@|%-3@|%.2@",
         {2.9, "text", std::int64_t(4), "ab", "c", "x\u05D0"},
         "2 text 4    ab|c  |x"},
        {"%2$@ before %1$@", {"one", "two"}, "two before one"},
        {"%d", {std::numeric_limits<std::int64_t>::min()}, "-9223372036854775808"},
        {"%d %d", {1e300, std::numeric_limits<double>::quiet_NaN()}, "9223372036854775807 0"},
        {"100%% of %@", {"it"}, "100% of it"},
    };
    for (const auto& [format, arguments, expected] : cases) {
        EXPECT_EQ(formatString(format, arguments), expected);
    }
}

TEST(StringFormat, hostile_formats_and_missing_arguments_are_harmless) {
    EXPECT_EQ(formatString("%@ %@ %d", {"one"}), "one %@ %d");
    EXPECT_EQ(formatString("nothing", {"dropped"}), "nothing");
    EXPECT_EQ(formatString("%n %q %*d %", {"a", "b"}), "%n %q %*d %");
    EXPECT_EQ(formatString("%s%s%s", {}), "%s%s%s");
    EXPECT_EQ(formatString("%0$@ %9$@ %-", {"a"}), "%0$@ %9$@ %-");
    EXPECT_EQ(formatString("%999999999999999999999d", {std::int64_t(1)}).size(), 1000U);
    EXPECT_EQ(formatString("%.999999999f", {1e308}).size(), 309U + 1U + 1000U);
    EXPECT_EQ(formatString("%05.1f", {std::numeric_limits<double>::infinity()}), "  inf");
}

TEST(RegularExpression, matches_carry_their_groups_and_templates_refer_to_them) {
    const auto expression = RegularExpression::compile("PLAY_SESSION=([^;]+);(x)?").value();
    EXPECT_EQ(expression.firstMatch("a=b; PLAY_SESSION=s1; PLAY_SESSION=s2;x"),
              (std::vector<std::string>{"PLAY_SESSION=s1;", "s1", ""}));
    EXPECT_EQ(expression.matches("PLAY_SESSION=\u05D01;PLAY_SESSION=2;x").size(), 2U);
    EXPECT_EQ(expression.firstMatch("PLAY_SESSION=;"), std::nullopt);
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"[\\s,;=]+", "a ,;b=c", "_", "a_b_c"},
        {"(\\w)(\\w)", "abcd", "$2$1", "badc"},
        {"(a)", "banana", "<$1>", "b<a>n<a>n<a>"},
        {"(a)", "banana", "$2", "banana"},
        {"a", "banana", "\\$1", "b$1n$1n$1"},
        {"", "ab", "-", "-a-b-"},
        {"\\p{Hebrew}+", "x \u05D0\u05D1 y", "h", "x h y"},
        {"x", "caf\u00E9 \U0001F600", "", "caf\u00E9 \U0001F600"},
    };
    for (const auto& [pattern, text, replacement, expected] : cases) {
        EXPECT_EQ(RegularExpression::compile(pattern)->replacingMatches(text, replacement), expected)
            << pattern;
    }
}

TEST(RegularExpression, invalid_patterns_have_no_value_and_endless_ones_end) {
    for (const std::string pattern : {"(", "[", "a{2,1}", "(?<n", "\\"}) {
        EXPECT_FALSE(RegularExpression::compile(pattern)) << pattern;
    }
    const std::string text(5000, 'a');
    const auto endless = RegularExpression::compile("(a+a*)+b").value();
    EXPECT_EQ(endless.firstMatch(text), std::nullopt);
    EXPECT_EQ(endless.replacingMatches(text, "x"), text);
}

TEST(DateFormatter, reads_and_writes_the_service_s_dates_and_nothing_else) {
    using namespace std::chrono_literals;
    const DateFormatter notebook({.pattern = "MMM dd, yyyy hh:mm:ss a", .timeZone = "UTC"});
    const DateFormatter account({.pattern = "LLL d, yyyy hh:mm:ss a", .timeZone = "UTC"});
    const DateFormatter newYork({.pattern = "MMM dd, yyyy hh:mm:ss a", .timeZone = "America/New_York"});
    const Date date = std::chrono::sys_days(std::chrono::year(2017) / 3 / 5) + 13h + 4min + 9s;
    EXPECT_EQ(notebook.date("Mar 05, 2017 01:04:09 PM"), date);
    EXPECT_EQ(account.date("Mar 5, 2017 01:04:09 PM"), date);
    EXPECT_EQ(newYork.date("Mar 05, 2017 08:04:09 AM"), date);
    EXPECT_EQ(notebook.string(date + 1ms), "Mar 05, 2017 01:04:09 PM");
    EXPECT_EQ(account.string(date), "Mar 5, 2017 01:04:09 PM");
    for (const std::string text :
         {"", "Mar 05, 2017", "Feb 30, 2017 01:00:00 AM", "Mar 05, 2017 01:04:09 PM x",
          "Mar 05, 2017 13:04:09 PM", "05 Mar, 2017 01:04:09 PM", "2017-03-05T13:04:09Z",
          "Foo 05, 2017 01:04:09 PM", "Mar 05, 2017 01:60:09 PM"}) {
        EXPECT_EQ(notebook.date(text), std::nullopt) << text;
    }
}

TEST(DateFormatter, its_quick_way_reads_what_the_slow_one_reads) {
    const DateFormatter writer({.pattern = "MMM dd, yyyy hh:mm:ss a", .timeZone = "UTC"});
    // The slow one's pattern means the same and is left to ICU alone.
    for (const std::string zone : {"UTC", "America/New_York", "Australia/Lord_Howe", "Asia/Kathmandu",
                                   "Africa/Casablanca", "Pacific/Apia", "America/Caracas"}) {
        const DateFormatter quick({.pattern = "MMM dd, yyyy hh:mm:ss a", .timeZone = zone});
        const DateFormatter slow({.pattern = "MMM dd',' yyyy hh:mm:ss a", .timeZone = zone});
        const auto check = [&](const std::string& text) {
            EXPECT_EQ(quick.date(text), slow.date(text)) << zone << " " << text;
        };
        // Steps of 5 h 29 min come close to every change of a clock in these years, and go over a leap day.
        for (Date date = std::chrono::sys_days(std::chrono::year(2007) / 1 / 1);
             date < std::chrono::sys_days(std::chrono::year(2012) / 6 / 1);
             date += std::chrono::minutes(5 * 60 + 29)) {
            check(writer.string(date));
        }
        for (const std::string text :
             {"Jan 01, 1970 12:00:00 AM", "Dec 31, 2099 11:59:59 PM", "Jan 01, 1969 12:00:00 AM",
              "Jan 01, 2100 12:00:00 PM", "Feb 29, 2012 12:00:00 PM", "Feb 29, 2011 12:00:00 PM",
              "Mar 5, 2017 1:04:09 PM", "MAR 05, 2017 01:04:09 pm", "March 05, 2017 01:04:09 PM",
              "anF 05, 2017 01:04:09 PM", "Mar 00, 2017 01:04:09 PM", "Mar 05, 2017 00:04:09 AM",
              "Mar 05, 2017 12:60:09 AM", "Mar 05, 2017 12:04:60 AM", "Mar +5, 2017 01:04:09 PM",
              "Mar 05, 2017 01:04:09 XM", "Mar 05,  217 01:04:09 PM", "Mar 05, 2017 01:04:09 PM "}) {
            check(text);
        }
    }
}

} // namespace
} // namespace teralune
