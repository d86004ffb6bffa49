#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teralune {

class UserDefaults;
struct PlatformServices;

/// A folder of resources: files, and per language a folder "xx.lproj" with string tables
/// ("Localizable.strings", UTF-8 or UTF-16, the property-list text form). "Base.lproj" holds the development
/// language, English. Look-ups may be made from any thread; tables are read once and kept.
class Bundle {
public:
    /// The preferences under "AppleLanguages" in these defaults decide the language; without any the
    /// process's LANGUAGE, LC_ALL, LC_MESSAGES and LANG do, in that order.
    Bundle(std::filesystem::path folder, std::shared_ptr<UserDefaults> languagePreferences);
    virtual ~Bundle();

    const std::filesystem::path& folder() const { return folder_; }

    /// The file "name.type" of this bundle: in the folder itself or in the folder of the first preferred
    /// localization that has it. A type "lproj" finds a language folder.
    std::optional<std::filesystem::path> pathForResource(std::string_view name, std::string_view type) const;

    /// The text of a key; "value" when the table lacks it, and the key itself when that is empty too.
    /// An empty table name means "Localizable".
    virtual std::string localizedString(std::string_view key, std::string_view value = {},
                                        std::string_view table = {}) const;

    /// The languages of this bundle in the order in which the user prefers them. Read afresh on each call, so
    /// that a switch takes effect at once. Where the bundle has none of those preferred, the languages stay
    /// what they were; at first that is the development language ("en").
    std::vector<std::string> preferredLocalizations() const;

    /// Switches the interface language of the application: remembers the code under "AppleLanguages" and
    /// redirects the look-ups of the main bundle to the folder of that language, with effect at once. A code
    /// without a folder leaves the redirection as it is. Main thread.
    static void set(std::string_view languageCode, const PlatformServices& platform);

private:
    class Tables;
    void keepLanguages() const;

    std::filesystem::path folder_;
    std::shared_ptr<UserDefaults> languagePreferences_;
    std::unique_ptr<Tables> tables_;
};

} // namespace teralune
