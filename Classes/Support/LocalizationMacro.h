#pragma once

#include "Classes/Support/Localization.h"

namespace teralune {

/// The look-up of the library's texts, under the name that hosts know. Any thread.
class LocalizationMacro {
public:
    static std::string Localize(std::string_view key,
                                const PlatformServices& platform = PlatformServices::standard()) {
        return teralune::Localize(platform, key);
    }
};

} // namespace teralune
