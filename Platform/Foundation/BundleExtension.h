#pragma once

#include "Platform/Foundation/Bundle.h"

#include <mutex>

namespace teralune {

class Printer;

/// A bundle whose look-ups can be redirected to one language while the application runs. Until
/// redirectLookups() it behaves as a plain bundle; from then on the attached language bundle, where there is
/// one, answers. Any thread.
class BundleExtension final : public Bundle {
public:
    using Bundle::Bundle;

    std::string localizedString(std::string_view key, std::string_view value = {},
                                std::string_view table = {}) const override;

    /// Switches the redirection on, for good. The first call announces it.
    void redirectLookups(Printer& printer);
    /// Replaces an earlier one.
    void attachLanguageBundle(std::shared_ptr<const Bundle> languageBundle);

private:
    mutable std::mutex mutex_;
    bool redirects_ = false;
    std::shared_ptr<const Bundle> attached_;
};

} // namespace teralune
