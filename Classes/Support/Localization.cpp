#include "Classes/Support/Localization.h"

#include "Platform/Foundation/Bundle.h"

namespace teralune {

std::string Localize(const PlatformServices& platform, std::string_view key, std::string_view comment) {
    return Localize(key, TeraluneUIBundle(platform), comment);
}

std::string Localize(std::string_view key, const Bundle& bundle, std::string_view /*comment*/) {
    return bundle.localizedString(key);
}

} // namespace teralune
