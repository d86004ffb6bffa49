#include "Platform/Foundation/Bundle.h"

#include "Platform/Defaults/UserDefaults.h"
#include "Platform/Foundation/LanguagePreferences.h"
#include "Platform/Foundation/StringTable.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

namespace teralune {

namespace {

constexpr std::string_view developmentLanguage = "en";
constexpr std::string_view developmentFolder = "Base";

/// The languages that have a folder here, in the order of their names.
std::vector<std::string> languagesIn(const std::filesystem::path& folder) {
    std::vector<std::string> languages;
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (entry->path().extension() == ".lproj" && entry->is_directory(failure)) {
            const std::string name = entry->path().stem().string();
            languages.push_back(name == developmentFolder ? std::string(developmentLanguage) : name);
        }
    }
    std::sort(languages.begin(), languages.end());
    languages.erase(std::unique(languages.begin(), languages.end()), languages.end());
    return languages;
}

bool isPresent(const std::filesystem::path& path) {
    std::error_code failure;
    return std::filesystem::exists(path, failure);
}

std::vector<std::string> textsOf(const boost::json::array& array) {
    std::vector<std::string> texts;
    for (const boost::json::value& element : array) {
        if (element.is_string()) {
            texts.emplace_back(element.get_string());
        }
    }
    return texts;
}

} // namespace

/// What was read of the bundle so far. What depends on the language is worked out anew when the preferences
/// have changed, which is all that a look-up has to compare.
class Bundle::Tables {
public:
    explicit Tables(std::filesystem::path folder)
        : folder_(std::move(folder))
        , environment_(environmentLanguages()) {}

    std::vector<std::string> preferredLanguages(const std::optional<boost::json::array>& preferences) {
        const std::lock_guard lock(mutex_);
        usePreferences(preferences);
        return preferred_;
    }

    /// Goes on with the languages in force although the preferences are others now.
    void keepLanguages(const std::optional<boost::json::array>& preferences) {
        const std::lock_guard lock(mutex_);
        if (isReady_) {
            preferences_ = preferences;
        }
    }

    std::shared_ptr<const StringTable> table(const std::string& name,
                                             const std::optional<boost::json::array>& preferences) {
        const std::lock_guard lock(mutex_);
        usePreferences(preferences);
        std::shared_ptr<const StringTable>& chosen = chosenTables_[name];
        if (!chosen) {
            chosen = load(name);
        }
        return chosen;
    }

    /// The folders to search for a resource of a language, best first.
    static std::vector<std::filesystem::path> foldersOf(const std::filesystem::path& folder,
                                                        const std::string& language) {
        std::vector<std::filesystem::path> folders{folder / (language + ".lproj")};
        if (language == developmentLanguage) {
            folders.push_back(folder / (std::string(developmentFolder) + ".lproj"));
        }
        return folders;
    }

private:
    void usePreferences(const std::optional<boost::json::array>& preferences) {
        if (isReady_ && preferences == preferences_) {
            return;
        }
        if (!isReady_) {
            languages_ = languagesIn(folder_);
        }
        isReady_ = true;
        preferences_ = preferences;
        chosenTables_.clear();
        const std::vector<std::string> asked =
            preferences ? textsOf(*preferences) : std::vector<std::string>();
        std::vector<std::string> matching =
            matchingLanguages(asked.empty() ? environment_ : asked, languages_);
        if (matching.empty() && !languages_.empty()) {
            // A switch to a language that the bundle lacks leaves the one that is in force.
            matching = preferred_.empty() ? std::vector<std::string>{std::string(developmentLanguage)}
                                          : std::move(preferred_);
        }
        preferred_ = std::move(matching);
    }

    /// The table of the best language that has it, then the development language's, then the one that lies in
    /// the folder itself, as in a bundle that was opened on a language folder.
    std::shared_ptr<const StringTable> load(const std::string& name) {
        const std::string fileName = name + ".strings";
        std::vector<std::filesystem::path> candidates;
        for (const std::string& language : preferred_) {
            for (const auto& folder : foldersOf(folder_, language)) {
                candidates.push_back(folder / fileName);
            }
        }
        for (const auto& folder : foldersOf(folder_, std::string(developmentLanguage))) {
            candidates.push_back(folder / fileName);
        }
        candidates.push_back(folder_ / fileName);
        const auto found = std::find_if(candidates.begin(), candidates.end(), isPresent);
        if (found == candidates.end()) {
            return std::make_shared<const StringTable>();
        }
        std::shared_ptr<const StringTable>& loaded = loadedTables_[*found];
        if (!loaded) {
            loaded = std::make_shared<const StringTable>(StringTable::load(*found));
        }
        return loaded;
    }

    const std::filesystem::path folder_;
    const std::vector<std::string> environment_;

    std::mutex mutex_;
    bool isReady_ = false;
    std::vector<std::string> languages_;
    std::optional<boost::json::array> preferences_;
    std::vector<std::string> preferred_;
    std::map<std::string, std::shared_ptr<const StringTable>> chosenTables_;
    std::map<std::filesystem::path, std::shared_ptr<const StringTable>> loadedTables_;
};

Bundle::Bundle(std::filesystem::path folder, std::shared_ptr<UserDefaults> languagePreferences)
    : folder_(std::move(folder))
    , languagePreferences_(std::move(languagePreferences))
    , tables_(std::make_unique<Tables>(folder_)) {}

Bundle::~Bundle() = default;

std::optional<std::filesystem::path> Bundle::pathForResource(std::string_view name,
                                                             std::string_view type) const {
    std::string fileName(name);
    if (!type.empty()) {
        fileName.append(".").append(type);
    }
    // A name never leads out of the bundle, whoever it comes from.
    if (name.empty() || fileName.find_first_of(std::string_view("/\0", 2)) != std::string::npos) {
        return std::nullopt;
    }
    std::vector<std::filesystem::path> folders{folder_};
    for (const std::string& language : preferredLocalizations()) {
        const auto localized = Tables::foldersOf(folder_, language);
        folders.insert(folders.end(), localized.begin(), localized.end());
    }
    for (const auto& folder : folders) {
        if (isPresent(folder / fileName)) {
            return folder / fileName;
        }
    }
    return std::nullopt;
}

std::string Bundle::localizedString(std::string_view key, std::string_view value,
                                    std::string_view table) const {
    const std::string name(table.empty() ? "Localizable" : table);
    const auto texts = tables_->table(name, languagePreferences_->array("AppleLanguages"));
    return std::string(texts->text(key).value_or(value.empty() ? key : value));
}

std::vector<std::string> Bundle::preferredLocalizations() const {
    return tables_->preferredLanguages(languagePreferences_->array("AppleLanguages"));
}

void Bundle::keepLanguages() const {
    tables_->keepLanguages(languagePreferences_->array("AppleLanguages"));
}

} // namespace teralune
