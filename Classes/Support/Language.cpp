#include "Classes/Support/Language.h"

#include "Platform/Foundation/AsciiText.h"
#include "Platform/Foundation/BundleExtension.h"

#include <algorithm>

namespace teralune {

std::string Language::currentLanguageIdentifier(const PlatformServices& platform) {
    const std::vector<std::string> preferred = platform.mainBundle->preferredLocalizations();
    if (preferred.empty())
        return {};
    const std::string code = lowercased(preferred.front());
    // The server knows one Portuguese.
    return code.starts_with("pt") ? "pt" : code;
}

std::string Language::getCurrentLanguageIdentifier(const PlatformServices& platform) {
    return currentLanguageIdentifier(platform);
}

std::vector<std::pair<std::string, std::string>> Language::localizationsWithLabels() {
    std::vector<std::pair<std::string, std::string>> languages = {
        {"en", "English"}, {"es", "Español"}, {"pt-PT", "Português"}, {"he", "עברית"}};
    std::sort(languages.begin(), languages.end(),
              [](const auto& left, const auto& right) { return left.second < right.second; });
    return languages;
}

} // namespace teralune
