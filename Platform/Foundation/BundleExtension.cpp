#include "Platform/Foundation/BundleExtension.h"

#include "Platform/Defaults/UserDefaults.h"
#include "Platform/Foundation/Printer.h"
#include "Platform/PlatformServices.h"

#include <utility>

namespace teralune {

std::string BundleExtension::localizedString(std::string_view key, std::string_view value,
                                             std::string_view table) const {
    const auto answering = [this] {
        const std::lock_guard lock(mutex_);
        return redirects_ ? attached_ : nullptr;
    }();
    return answering ? answering->localizedString(key, value, table)
                     : Bundle::localizedString(key, value, table);
}

void BundleExtension::redirectLookups(Printer& printer) {
    const bool first = [this] {
        const std::lock_guard lock(mutex_);
        return !std::exchange(redirects_, true);
    }();
    if (first)
        printer.print("LANG: setting 'once'");
}

void BundleExtension::attachLanguageBundle(std::shared_ptr<const Bundle> languageBundle) {
    const std::lock_guard lock(mutex_);
    attached_ = std::move(languageBundle);
}

void Bundle::set(std::string_view languageCode, const PlatformServices& platform) {
    Printer& printer = *platform.printer;
    printer.print("LANG: Changing language to " + std::string(languageCode));
    // Both have to know the language in force, to keep it where there is no folder for the new one.
    const Bundle* const bundles[] = {platform.libraryBundle.get(), platform.mainBundle.get()};
    for (const Bundle* each : bundles) {
        static_cast<void>(each->preferredLocalizations());
    }
    BundleExtension& bundle = *platform.mainBundle;
    const std::string folderName(languageCode == "en" ? "Base" : languageCode);
    const auto folder = bundle.pathForResource(folderName, "lproj");
    platform.userDefaults->set("AppleLanguages", boost::json::array{boost::json::string(languageCode)});
    platform.userDefaults->synchronize();

    bundle.redirectLookups(printer);
    if (!folder) {
        printer.print("LANG: Could not find bundle path for " + folderName + ".lproj");
        // Or a relative would be taken for it, a Portuguese one for "pt", by all that is not redirected.
        for (const Bundle* each : bundles) {
            each->keepLanguages();
        }
        return;
    }
    printer.print("LANG: Setting bundle path to " + folder->string());
    bundle.attachLanguageBundle(std::make_shared<Bundle>(*folder, platform.userDefaults));
}

} // namespace teralune
