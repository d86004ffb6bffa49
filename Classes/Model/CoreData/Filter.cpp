#include "Classes/Model/CoreData/Filter.h"

#include "Classes/Support/Localization.h"
#include "Platform/Foundation/FatalError.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace teralune {
namespace {

constexpr int typeSection = 0;
constexpr int favoriteSection = 1;
constexpr int topicSection = 2;
constexpr int tagSection = 3;

void appendQuoted(std::string& result, std::string_view text) {
    result += '"';
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            result += '\\';
        }
        result += character;
    }
    result += '"';
}

std::string describe(const std::map<std::string, bool>& map) {
    std::string result = "[";
    for (const auto& [key, flag] : map) {
        result += result.size() > 1 ? ", " : "";
        appendQuoted(result, key);
        result += flag ? ": true" : ": false";
    }
    result += map.empty() ? ":]" : "]";
    return result;
}

std::string listOf(const std::vector<std::string>& options) {
    std::string result = "[";
    for (const std::string& option : options) {
        result += result.size() > 1 ? ", " : "";
        appendQuoted(result, option);
    }
    result += ']';
    return result;
}

std::optional<std::size_t> rowOf(IndexPath indexPath, std::size_t count) {
    const auto row = static_cast<std::size_t>(indexPath.row);
    return indexPath.row >= 0 && row < count ? std::optional(row) : std::nullopt;
}

} // namespace

Filter::Filter(Localizer localizer) : localizer_(std::move(localizer)) {
    if (!localizer_) {
        localizer_ = [](std::string_view key) { return Localize(PlatformServices::standard(), key); };
    }
}

const FilterSection* Filter::section(int section) const {
    switch (section) {
    case typeSection:
        return &typeFilter;
    case topicSection:
        return &topicFilter;
    case tagSection:
        return &tagFilter;
    default:
        return nullptr;
    }
}

int Filter::numberOfRows(int section) const {
    if (section == favoriteSection) {
        return 1;
    }
    const FilterSection* const options = this->section(section);
    return options != nullptr ? static_cast<int>(options->dict.size()) : 0;
}

std::optional<std::string> Filter::text(int section) const {
    if (numberOfRows(section) == 0) {
        return std::nullopt;
    }
    switch (section) {
    case typeSection:
        return localizer_("FILTER_BY_TYPE");
    case favoriteSection:
        return localizer_("FILTER_BY_FAVORITE");
    case topicSection:
        return localizer_("FILTER_BY_TOPIC");
    default:
        return localizer_("FILTER_BY_TAG");
    }
}

std::optional<std::string> Filter::text(IndexPath indexPath) const {
    if (indexPath.section == favoriteSection) {
        return localizer_("FAVORITE_STARRED");
    }
    const FilterSection* const options = section(indexPath.section);
    if (options == nullptr) {
        return std::nullopt;
    }
    const std::vector<std::string> keys = localizedOrderedKeys(options->dict, localizer_);
    const std::optional<std::size_t> row = rowOf(indexPath, keys.size());
    if (!row) {
        return std::nullopt;
    }
    return options->localized ? localizer_(keys[*row]) : keys[*row];
}

std::vector<std::string> Filter::texts(int section) const {
    if (section == favoriteSection) {
        return {localizer_("FAVORITE_STARRED")};
    }
    const FilterSection* const options = this->section(section);
    if (options == nullptr) {
        return {};
    }
    std::vector<std::string> texts = localizedOrderedKeys(options->dict, localizer_);
    if (options->localized) {
        std::transform(texts.begin(), texts.end(), texts.begin(), localizer_);
    }
    return texts;
}

void Filter::updateSelected(IndexPath indexPath) {
    if (indexPath.section == favoriteSection) {
        filterFavorites = true;
        return;
    }
    auto* const options = const_cast<FilterSection*>(section(indexPath.section));
    if (options == nullptr) {
        return;
    }
    const std::vector<std::string> keys = localizedOrderedKeys(options->dict, localizer_);
    const std::optional<std::size_t> row = rowOf(indexPath, keys.size());
    if (!row) {
        fatalError("Index " + std::to_string(indexPath.row) + " not found in dict " +
                   describe(options->dict));
    }
    options->dict[keys[*row]] = true;
}

std::vector<IndexPath> Filter::allSelected() const {
    std::vector<IndexPath> selected;
    if (filterFavorites) {
        selected.push_back({favoriteSection, 0});
    }
    for (const int number : {typeSection, topicSection, tagSection}) {
        const FilterSection& options = *section(number);
        int row = 0;
        for (const std::string& key : localizedOrderedKeys(options.dict, localizer_)) {
            if (options.dict.at(key)) {
                selected.push_back({number, row});
            }
            ++row;
        }
    }
    return selected;
}

bool Filter::isBlank() const {
    return !predicate();
}

std::string Filter::description() const {
    return std::string("Filter(favorites: ") + (filterFavorites ? "true" : "false") +
           ", types: " + listOf(typeFilter.selectedOptions()) +
           ", topics: " + listOf(topicFilter.selectedOptions()) +
           ", tags: " + listOf(tagFilter.selectedOptions()) + ")";
}

std::optional<Predicate> Filter::predicate() const {
    std::vector<Predicate> conditions;
    if (filterFavorites) {
        conditions.push_back(Predicate::isFavorite());
    }
    if (auto types = typeFilter.selectedOptions(); !types.empty()) {
        conditions.push_back(Predicate::isIn(Predicate::TextAttribute::savedFrom, std::move(types)));
    }
    if (auto topics = topicFilter.selectedOptions(); !topics.empty()) {
        conditions.push_back(Predicate::isIn(Predicate::TextAttribute::topic, std::move(topics)));
    }
    if (auto tags = tagFilter.selectedOptions(); !tags.empty()) {
        conditions.push_back(Predicate::anyTagIsIn(std::move(tags)));
    }
    if (conditions.empty()) {
        return std::nullopt;
    }
    return Predicate::allOf(std::move(conditions));
}

} // namespace teralune
