#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Foundation/PercentEncoding.h"
#include "Platform/Foundation/Utf8.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace teralune {
namespace {

TEST(Utf8, valid_text_is_told_from_invalid_and_every_invalid_piece_becomes_one_replacement) {
    struct Case {
        std::string bytes;
        std::string replaced;
    };
    const std::string mark = "\xEF\xBF\xBD";
    const Case valid[] = {
        {"", ""},
        {"plain text beyond one word", "plain text beyond one word"},
        {std::string("\0\x7F", 2), std::string("\0\x7F", 2)},
        {"\xC2\x80 \xDF\xBF", "\xC2\x80 \xDF\xBF"},
        {"\xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80", "\xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80"},
        {"\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF", "\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF"},
    };
    for (const Case& each : valid) {
        EXPECT_TRUE(isValidUtf8(each.bytes)) << each.bytes;
        EXPECT_EQ(replacingInvalidUtf8(each.bytes), each.replaced);
    }
    const Case invalid[] = {
        {"eight or more, then \xFF", "eight or more, then " + mark},
        {"\x80", mark},
        {"\xC0\xAF", mark + mark},
        {"\xC1\xBF", mark + mark},
        {"\xE0\x9F\xBF", mark + mark + mark},
        {"\xED\xA0\x80", mark + mark + mark},
        {"\xF0\x8F\xBF\xBF", mark + mark + mark + mark},
        {"\xF4\x90\x80\x80", mark + mark + mark + mark},
        {"\xF5\x80\x80\x80", mark + mark + mark + mark},
        {"\xE2\x82", mark},
        {"\xE2\x82z", mark + "z"},
        {"\xF0\x9F\x98", mark},
        {"a\xC3", "a" + mark},
    };
    for (const Case& each : invalid) {
        EXPECT_FALSE(isValidUtf8(each.bytes)) << each.replaced;
        EXPECT_EQ(replacingInvalidUtf8(each.bytes), each.replaced);
    }
}

TEST(Utf8, latin_1_and_code_points_become_utf8_and_a_prefix_cuts_no_character) {
    EXPECT_EQ(decodeLatin1("caf\xE9 \xFF"), "caf\xC3\xA9 \xC3\xBF");
    std::string text;
    for (const char32_t codePoint :
         {U'a', U'\u05D0', U'\u20AC', U'\U0001F600', char32_t(0xD800), char32_t(0x110000)}) {
        appendUtf8(text, codePoint);
    }
    EXPECT_EQ(text, "a\u05D0\u20AC\U0001F600\uFFFD\uFFFD");
    EXPECT_EQ(utf8PrefixLength("a\u20ACb", 3), 1U);
    EXPECT_EQ(utf8PrefixLength("a\u20ACb", 4), 4U);
    EXPECT_EQ(utf8PrefixLength("\x80\x80", 1), 0U);
}

TEST(PercentEncoding, each_set_leaves_exactly_its_own_ascii_characters) {
    const std::string alphanumeric = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    const struct {
        CharacterSet set;
        std::string others;
    } cases[] = {
        {CharacterSet::urlFragmentAllowed(), "!$&'()*+,-./:;=?@_~"},
        {CharacterSet::urlQueryAllowed(), "!$&'()*+,-./:;=?@_~"},
        {CharacterSet::urlPathAllowed(), "!$&'()*+,-./:=@_~"},
        {CharacterSet::urlQueryAllowed().without("'&/=+\xC3"), "!$()*,-.:;?@_~"},
    };
    for (const auto& [set, others] : cases) {
        std::string kept;
        for (int code = 0; code < 256; ++code) {
            const char character = static_cast<char>(code);
            if (set.contains(character)) {
                kept += character;
            }
            if (code < 128) {
                char escaped[4];
                std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned>(code));
                EXPECT_EQ(addingPercentEncoding(std::string(1, character), set),
                          set.contains(character) ? std::string(1, character) : std::string(escaped));
            }
        }
        std::string expected = alphanumeric + others;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(kept, expected);
    }
}

TEST(PercentEncoding, text_survives_the_way_there_and_back_and_what_is_no_text_has_no_value) {
    const CharacterSet set = CharacterSet::urlQueryAllowed();
    EXPECT_EQ(addingPercentEncoding("x² \u05D0", set), "x%C2%B2%20%D7%90");
    for (const std::string text : {"", "100%", "a b\u20AC\U0001F600", "%41"}) {
        EXPECT_EQ(removingPercentEncoding(addingPercentEncoding(text, set).value()), text);
    }
    EXPECT_EQ(addingPercentEncoding("\xED\xA0\x80", set), std::nullopt);
    EXPECT_EQ(removingPercentEncoding("%c3%A9+"), "\u00E9+");
    for (const std::string text : {"%", "%4", "%G0", "%0G", "a%C3", "%ED%A0%80", "% 41"}) {
        EXPECT_EQ(removingPercentEncoding(text), std::nullopt) << text;
    }
}

TEST(JsonMapping, hostile_texts_are_errors_and_sound_ones_are_values) {
    const std::string deepest = std::string(64, '[') + std::string(64, ']');
    for (const std::string text :
         {"null", " 1 ", "\"x\"", "{\"a\":[1.5,true]}", "1e308", "\"\\u05d0\"", deepest.c_str()}) {
        EXPECT_TRUE(parseJson(text)) << text;
    }
    const std::string tooDeep = std::string(65, '[') + std::string(65, ']');
    const std::string bottomless(1'000'000, '[');
    for (const std::string& text :
         {std::string(), std::string("{"), std::string("1 2"), std::string("nul"),
          std::string("{\"a\":[1e999]}"), std::string("0e9999"), std::string("1e99999999999"),
          std::string("\"\xC0\xAF\""), std::string("\"\xED\xA0\x80\""), std::string("[1,]"), tooDeep,
          bottomless}) {
        EXPECT_FALSE(parseJson(text)) << text.substr(0, 80);
    }
    EXPECT_EQ(serializeJson(parseJson("{ \"k\" : [ 1, \"\u05D0\\n\" ] }").value()),
              "{\"k\":[1,\"\u05D0\\n\"]}");
}

} // namespace
} // namespace teralune
