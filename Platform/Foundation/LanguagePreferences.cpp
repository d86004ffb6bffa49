#include "Platform/Foundation/LanguagePreferences.h"

#include "Platform/Foundation/AsciiText.h"

#include <algorithm>
#include <cstdlib>

namespace teralune {

namespace {

std::string_view environmentValue(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string languageOfLocale(std::string_view locale) {
    std::string language(locale.substr(0, locale.find_first_of(".@")));
    std::replace(language.begin(), language.end(), '_', '-');
    return language == "C" || language == "POSIX" ? "en" : language;
}

/// The form in which tags are compared: lower case, hyphens, and Hebrew by its present code.
std::string comparable(std::string_view tag) {
    std::string result = lowercased(tag);
    std::replace(result.begin(), result.end(), '_', '-');
    if (result == "iw" || result.starts_with("iw-")) {
        result.replace(0, 2, "he");
    }
    return result;
}

std::string_view languagePart(std::string_view tag) {
    return tag.substr(0, tag.find('-'));
}

const std::string* bestMatch(const std::string& preference, const std::vector<std::string>& available) {
    const std::string wanted = comparable(preference);
    const std::string language(languagePart(wanted));
    const std::string* best = nullptr;
    for (const std::string& each : available) {
        const std::string offered = comparable(each);
        if (offered == wanted) {
            return &each;
        }
        // The plain language comes before another variety of it.
        if (offered == language || (best == nullptr && languagePart(offered) == language)) {
            best = &each;
        }
    }
    return best;
}

} // namespace

std::vector<std::string> environmentLanguages() {
    std::vector<std::string> languages;
    for (std::string_view list = environmentValue("LANGUAGE"); !list.empty();) {
        const std::string_view locale = list.substr(0, list.find(':'));
        list.remove_prefix(std::min(locale.size() + 1, list.size()));
        if (!locale.empty()) {
            languages.push_back(languageOfLocale(locale));
        }
    }
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const std::string_view locale = environmentValue(name); languages.empty() && !locale.empty()) {
            languages.push_back(languageOfLocale(locale));
        }
    }
    return languages;
}

std::vector<std::string> matchingLanguages(const std::vector<std::string>& preferred,
                                           const std::vector<std::string>& available) {
    std::vector<std::string> matching;
    for (const std::string& preference : preferred) {
        const std::string* match = bestMatch(preference, available);
        if (match != nullptr && std::find(matching.begin(), matching.end(), *match) == matching.end()) {
            matching.push_back(*match);
        }
    }
    return matching;
}

} // namespace teralune
