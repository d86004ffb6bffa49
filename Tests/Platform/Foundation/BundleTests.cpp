#include "Platform/Defaults/InMemoryUserDefaults.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/LanguagePreferences.h"
#include "Platform/Foundation/StringTable.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <stdlib.h>

namespace teralune {
namespace {

using Languages = std::vector<std::string>;

class BundleTest : public testing::Test {
protected:
    BundleTest() {
        folder_.write("Base.lproj/Localizable.strings", "\"OK\" = \"Fine\"; \"ONLY_BASE\" = \"base\";");
        folder_.write("Base.lproj/Other.strings", "\"OK\" = \"Other\";");
        folder_.write("es.lproj/Localizable.strings", "\"OK\" = \"Vale\";");
        folder_.write("pt-PT.lproj/Localizable.strings", "\"OK\" = \"Certo\";");
        folder_.write("he.lproj/Localizable.strings", "\"OK\" = \"\u05D0\";");
        folder_.write("es.lproj/page.html", "");
        folder_.write("image.png", "");
    }

    void prefer(const boost::json::array& languages) { defaults_->set("AppleLanguages", languages); }

    TemporaryFolder folder_;
    std::shared_ptr<InMemoryUserDefaults> defaults_ = std::make_shared<InMemoryUserDefaults>();
    const Bundle bundle_{folder_.path(), defaults_};
};

TEST_F(BundleTest, the_preferred_language_answers_and_a_switch_takes_effect_at_once) {
    const std::tuple<boost::json::array, Languages, const char*> cases[] = {
        {{"fr"}, {"en"}, "Fine"},
        {{"es"}, {"es"}, "Vale"},
        {{"pt-BR", "es-MX"}, {"pt-PT", "es"}, "Certo"},
        {{"fr", "iw"}, {"he"}, "\u05D0"},
        // No such folder: the language in force stays.
        {{"fr"}, {"he"}, "\u05D0"},
        {{"en-GB", "en"}, {"en"}, "Fine"},
        {{7, nullptr, "ES"}, {"es"}, "Vale"},
    };
    for (const auto& [preferred, localizations, text] : cases) {
        prefer(preferred);
        EXPECT_EQ(bundle_.preferredLocalizations(), localizations);
        EXPECT_EQ(bundle_.localizedString("OK"), text);
    }
}

TEST_F(BundleTest, a_missing_text_is_the_value_or_else_the_key) {
    prefer({"es"});
    EXPECT_EQ(bundle_.localizedString("ONLY_BASE"), "ONLY_BASE");
    EXPECT_EQ(bundle_.localizedString("NONE", "value"), "value");
    EXPECT_EQ(bundle_.localizedString("OK", "value", "Other"), "Other");
    EXPECT_EQ(bundle_.localizedString("OK", "", "NoSuchTable"), "OK");
}

TEST_F(BundleTest, resources_are_found_in_the_folder_and_in_the_preferred_language_and_never_outside) {
    prefer({"es"});
    EXPECT_EQ(bundle_.pathForResource("image", "png"), folder_.path() / "image.png");
    EXPECT_EQ(bundle_.pathForResource("page", "html"), folder_.path() / "es.lproj/page.html");
    EXPECT_EQ(bundle_.pathForResource("Base", "lproj"), folder_.path() / "Base.lproj");
    EXPECT_EQ(bundle_.pathForResource("fr", "lproj"), std::nullopt);
    EXPECT_EQ(bundle_.pathForResource("es.lproj/page", "html"), std::nullopt);
    EXPECT_EQ(bundle_.pathForResource("../" + folder_.path().filename().string() + "/image", "png"),
              std::nullopt);
    prefer({"he"});
    EXPECT_EQ(bundle_.pathForResource("page", "html"), std::nullopt);
}

TEST_F(BundleTest, a_language_folder_is_a_bundle_of_its_own_and_an_empty_one_has_no_language) {
    const Bundle language(folder_.path() / "pt-PT.lproj", defaults_);
    EXPECT_EQ(language.localizedString("OK"), "Certo");
    EXPECT_EQ(language.preferredLocalizations(), Languages());
    EXPECT_EQ(Bundle(folder_.path() / "missing", defaults_).localizedString("OK"), "OK");
}

TEST(LanguagePreferences, the_environment_s_first_word_counts) {
    const std::tuple<const char*, const char*, const char*, const char*, Languages> cases[] = {
        {"es:pt_BR:", "he_IL", "", "", {"es", "pt-BR"}},
        {"", "he_IL.UTF-8", "es", "en", {"he-IL"}},
        {"", "", "es_ES@euro", "en", {"es-ES"}},
        {"", "", "", "C.UTF-8", {"en"}},
        {"", "", "", "", {}},
    };
    for (const auto& [language, all, messages, lang, expected] : cases) {
        setenv("LANGUAGE", language, 1);
        setenv("LC_ALL", all, 1);
        setenv("LC_MESSAGES", messages, 1);
        setenv("LANG", lang, 1);
        EXPECT_EQ(environmentLanguages(), expected);
    }
    EXPECT_EQ(matchingLanguages({"pt", "zh-Hant-TW", "pt-BR"}, {"pt-BR", "pt-PT", "zh"}),
              (Languages{"pt-BR", "zh"}));
    EXPECT_EQ(matchingLanguages({"pt_br"}, {"pt-PT", "pt", "e"}), (Languages{"pt"}));
}

TEST(StringTable, reads_every_form_of_the_text) {
    const StringTable table =
        StringTable::parse("/* a \"comment\" = */ \"A\" = \"one\"; // = \"no\";\n"
                           "\"B b\"=\"l1\\nl2\\t\\\"q\\\" \\\\ \\U05d0\\u00e9\";\n"
                           "bare.KEY-1 = bare_value;\"C\";'D' = 'it\"s';"
                           "\"E\" = \"\\uD83D\\uDE00 \\ud83dx \\101\\z\";\"A\"=\"two\";");
    const std::pair<const char*, const char*> expected[] = {
        {"A", "two"},   {"B b", "l1\nl2\t\"q\" \\ \u05D0\u00E9"}, {"bare.KEY-1", "bare_value"}, {"C", "C"},
        {"D", "it\"s"}, {"E", "\U0001F600 \uFFFDx Az"},
    };
    EXPECT_EQ(table.size(), std::size(expected));
    for (const auto& [key, text] : expected) {
        EXPECT_EQ(table.text(key), text);
    }
    using namespace std::string_view_literals;
    const auto little = "\xFF\xFE\"\0k\0\"\0=\0\"\0\xD0\x05\x3D\xD8\x00\xDE\"\0;\0"sv;
    const auto big = "\xFE\xFF\0\"\0k\0\"\0=\0\"\x05\xD0\xD8\x3D\xDE\x00\0\"\0;"sv;
    EXPECT_EQ(StringTable::parse(little).text("k"), "\u05D0\U0001F600");
    EXPECT_EQ(StringTable::parse(big).text("k"), "\u05D0\U0001F600");
    EXPECT_EQ(StringTable::parse("\xEF\xBB\xBF\"k\"=\"v\";").text("k"), "v");
}

TEST(StringTable, a_damaged_file_gives_what_stands_before_the_damage) {
    const std::string sound = "\"k\" = \"v\";";
    for (const std::string damage :
         {"", "\"a\" = ", "\"a\"", "= \"b\";", "\"a\" = \"b", "/* endless", "\"a\" = \"b\\", "{",
          "\"a\" \"b\";", "\"a\" = \"\\U", "// end", "<?xml?>"}) {
        const StringTable table = StringTable::parse(sound + damage);
        EXPECT_EQ(table.size(), 1U) << damage;
        EXPECT_EQ(table.text("k"), "v") << damage;
    }
    EXPECT_EQ(StringTable::load("/").size(), 0U);
}

} // namespace
} // namespace teralune
