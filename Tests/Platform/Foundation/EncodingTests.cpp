#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Foundation/PercentEncoding.h"
#include "Platform/Foundation/Utf8.h"

#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <gtest/gtest.h>

namespace teralune {
namespace {

TEST(Utf8, valid_text_is_told_from_invalid_and_every_invalid_piece_becomes_one_replacement) {
    for (const std::string& text :
         {std::string("plain text beyond one word"), std::string("\0\x7F", 2),
          std::string("\xC2\x80 \xDF\xBF"), std::string("\xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80"),
          std::string("\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF"), std::string()}) {
        EXPECT_TRUE(isValidUtf8(text)) << text;
        EXPECT_EQ(replacingInvalidUtf8(text), text);
    }
    // An asterisk stands for a replacement.
    const std::pair<const char*, const char*> invalid[] = {
        {"eight or more, then \xFF", "eight or more, then *"},
        {"\x80", "*"},
        {"\xC0\xAF", "**"},
        {"\xC1\xBF", "**"},
        {"\xE0\x9F\xBF", "***"},
        {"\xED\xA0\x80", "***"},
        {"\xF0\x8F\xBF\xBF", "****"},
        {"\xF4\x90\x80\x80", "****"},
        {"\xF5\x80\x80\x80", "****"},
        {"\xE2\x82", "*"},
        {"\xE2\x82z", "*z"},
        {"\xF0\x9F\x98", "*"},
        {"a\xC3", "a*"},
    };
    for (const auto& [bytes, expected] : invalid) {
        EXPECT_FALSE(isValidUtf8(bytes)) << expected;
        EXPECT_EQ(replacingInvalidUtf8(bytes), boost::replace_all_copy(std::string(expected), "*", "\uFFFD"));
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
    const std::pair<CharacterSet, std::string> cases[] = {
        {CharacterSet::urlFragmentAllowed(), "!$&'()*+,-./:;=?@_~"},
        {CharacterSet::urlQueryAllowed(), "!$&'()*+,-./:;=?@_~"},
        {CharacterSet::urlPathAllowed(), "!$&'()*+,-./:=@_~"},
        {CharacterSet::urlQueryAllowed().without("'&/=+\xC3"), "!$()*,-.:;?@_~"},
    };
    for (const auto& [set, others] : cases) {
        for (int code = 0; code < 256; ++code) {
            const std::string character(1, static_cast<char>(code));
            const bool isAllowed = (alphanumeric + others).find(character) != std::string::npos;
            EXPECT_EQ(set.contains(character[0]), isAllowed) << code << others;
            if (code < 128) {
                const std::string escaped = "%" + boost::algorithm::hex(character);
                EXPECT_EQ(addingPercentEncoding(character, set), isAllowed ? character : escaped) << others;
            }
        }
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
    const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    for (const std::string& text :
         {std::string("null"), std::string(" 1 "), std::string("{\"a\":[1.5,true]}"), std::string("1e308"),
          std::string("\"\\u05d0\""), nested(64)}) {
        EXPECT_TRUE(parseJson(text)) << text;
    }
    for (const std::string& text :
         {std::string(), std::string("{"), std::string("1 2"), std::string("nul"),
          std::string("{\"a\":[1e999]}"), std::string("0e9999"), std::string("1e99999999999"),
          std::string("\"\xC0\xAF\""), std::string("[1,]"), nested(65), std::string(1'000'000, '[')}) {
        EXPECT_FALSE(parseJson(text)) << text.substr(0, 80);
    }
    EXPECT_EQ(serializeJson(parseJson("{ \"k\" : [ 1, \"\u05D0\\n\" ] }").value()),
              "{\"k\":[1,\"\u05D0\\n\"]}");
}

} // namespace
} // namespace teralune
