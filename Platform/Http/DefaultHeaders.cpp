#include "Platform/Foundation/BundleExtension.h"
#include "Platform/Foundation/StringFormat.h"
#include "Platform/Http/SessionManager.h"
#include "Platform/PlatformServices.h"

namespace teralune {

namespace {

/// The languages in the user's order, each a tenth less welcome than the one before.
std::string acceptLanguage(const std::vector<std::string>& languages) {
    constexpr std::size_t mostNamed = 6;
    std::string header;
    for (std::size_t index = 0; index < std::min(languages.size(), mostNamed); ++index) {
        const double weight = 1.0 - 0.1 * static_cast<double>(index);
        header += formatString(index == 0 ? "%@;q=%.1f" : ", %@;q=%.1f", {languages[index], weight});
    }
    return header;
}

} // namespace

HttpHeaders SessionManager::defaultHTTPHeaders(const PlatformServices& platform) {
    HttpHeaders headers{{"Accept-Encoding", "gzip, deflate"},
                        {"User-Agent", "TeraluneSharedLibrary/" TERALUNE_VERSION " (Linux)"}};
    if (const auto languages = platform.mainBundle->preferredLocalizations(); !languages.empty()) {
        headers.add("Accept-Language", acceptLanguage(languages));
    }
    return headers;
}

} // namespace teralune
