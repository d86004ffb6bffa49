#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace teralune {

/// Gives the text of a localization key, and the key itself where there is none.
using Localizer = std::function<std::string(std::string_view key)>;

/// The keys of a map in the order of their localized texts, which are compared byte by byte: upper case comes
/// before lower case in every language. Equal texts keep the map's order.
template<class Value>
std::vector<std::string> localizedOrderedKeys(const std::map<std::string, Value>& map,
                                              const Localizer& localizer) {
    std::vector<std::pair<std::string, std::string>> textsAndKeys;
    textsAndKeys.reserve(map.size());
    for (const auto& [key, value] : map) {
        textsAndKeys.emplace_back(localizer(key), key);
    }
    std::stable_sort(textsAndKeys.begin(), textsAndKeys.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    std::vector<std::string> keys;
    keys.reserve(textsAndKeys.size());
    for (auto& [text, key] : textsAndKeys) {
        keys.push_back(std::move(key));
    }
    return keys;
}

} // namespace teralune
