#include "Classes/Support/Language.h"
#include "Classes/Support/LocalizationMacro.h"
#include "Platform/Defaults/UserDefaults.h"
#include "Platform/Foundation/BundleExtension.h"
#include "Tests/Support/FakePlatform.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>

namespace teralune {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;

TEST(Language, the_offered_languages_come_in_the_order_of_their_names) {
    EXPECT_THAT(Language::localizationsWithLabels(),
                ElementsAre(Pair("en", "English"), Pair("es", "Español"), Pair("pt-PT", "Português"),
                            Pair("he", "עברית")));
}

TEST(Language, the_code_that_requests_carry_follows_the_preferences_at_once) {
    for (const auto& [preferred, code] : std::map<std::string, std::string>{
             {"en", "en"}, {"es-MX", "es"}, {"pt-BR", "pt"}, {"pt-PT", "pt"}, {"he", "he"}, {"ja", "en"}}) {
        FakePlatform platform;
        platform.setLanguage(preferred);
        EXPECT_EQ(Language::currentLanguageIdentifier(platform.services), code) << preferred;
        EXPECT_EQ(Language::getCurrentLanguageIdentifier(platform.services), code) << preferred;
    }
}

TEST(Language, a_switch_redirects_the_main_bundle_and_is_remembered) {
    FakePlatform platform;
    const BundleExtension& bundle = *platform.services.mainBundle;
    const std::string english = bundle.localizedString("COMMON_YES");

    Bundle::set("es", platform.services);
    EXPECT_THAT(
        platform.printer->takeLines(),
        ElementsAre("LANG: Changing language to es", "LANG: setting 'once'",
                    testing::AllOf(StartsWith("LANG: Setting bundle path to "), HasSubstr("es.lproj"))));
    EXPECT_EQ(bundle.localizedString("COMMON_YES"), "Sí");
    EXPECT_EQ(Localize(platform.services, "COMMON_YES"), "Sí");
    EXPECT_EQ(LocalizationMacro::Localize("COMMON_YES", platform.services), "Sí");
    EXPECT_EQ(Language::currentLanguageIdentifier(platform.services), "es");

    for (const std::string code : {"xx", "pt"}) {
        Bundle::set(code, platform.services);
        EXPECT_THAT(platform.printer->takeLines(),
                    ElementsAre("LANG: Changing language to " + code,
                                "LANG: Could not find bundle path for " + code + ".lproj"));
        EXPECT_EQ(bundle.localizedString("COMMON_YES"), "Sí") << "the language in force stays";
        EXPECT_EQ(Localize(platform.services, "COMMON_YES"), "Sí");
        EXPECT_EQ(Language::currentLanguageIdentifier(platform.services), "es");
    }

    Bundle::set("en", platform.services);
    EXPECT_THAT(platform.printer->takeLines(),
                ElementsAre("LANG: Changing language to en", HasSubstr("Base.lproj")));
    EXPECT_EQ(bundle.localizedString("COMMON_YES"), english);
    EXPECT_EQ(platform.services.userDefaults->array("AppleLanguages"), boost::json::array{"en"});
}

TEST(Language, every_table_has_every_key) {
    FakePlatform platform;
    const std::filesystem::path resources = platform.services.libraryBundle->folder();
    const Bundle english(resources / "Base.lproj", platform.services.userDefaults);
    std::ifstream table(resources / "Base.lproj/Localizable.strings");
    for (std::string line; std::getline(table, line);) {
        if (!line.starts_with('"'))
            continue;
        const std::string key = line.substr(1, line.find('"', 1) - 1);
        for (const char* language : {"es", "pt-PT", "he"}) {
            const Bundle translated(resources / (std::string(language) + ".lproj"),
                                    platform.services.userDefaults);
            EXPECT_NE(translated.localizedString(key, "absent"), "absent") << language << ' ' << key;
        }
    }
}

} // namespace
} // namespace teralune
