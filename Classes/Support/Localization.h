#pragma once

#include "Platform/PlatformServices.h"

#include <string>
#include <string_view>

namespace teralune {

class Bundle;

/// The bundle of the library's own string tables.
inline const Bundle& TeraluneUIBundle(const PlatformServices& platform = PlatformServices::standard()) {
    return *platform.libraryBundle;
}

/// The text of a localization key in the library's own bundle, in the interface language; the key itself when
/// no table has it. The comment is for translators and changes nothing. Any thread.
std::string Localize(const PlatformServices& platform, std::string_view key, std::string_view comment = {});
/// The same from another bundle.
std::string Localize(std::string_view key, const Bundle& bundle, std::string_view comment = {});

} // namespace teralune
