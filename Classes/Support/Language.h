#pragma once

#include "Platform/PlatformServices.h"

#include <string>
#include <utility>
#include <vector>

namespace teralune {

/// The interface language: which ones are offered, and which is in force. Any thread.
class Language {
public:
    /// The code that requests carry: the first preferred localization of the main bundle in lower case, "pt"
    /// for every kind of Portuguese, empty when the bundle has no localizations.
    static std::string
    currentLanguageIdentifier(const PlatformServices& platform = PlatformServices::standard());
    /// The same, under the name that hosts know.
    static std::string
    getCurrentLanguageIdentifier(const PlatformServices& platform = PlatformServices::standard());

    /// The offered languages as (code, own name), in ascending order of the names.
    static std::vector<std::pair<std::string, std::string>> localizationsWithLabels();
};

} // namespace teralune
