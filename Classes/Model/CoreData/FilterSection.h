#pragma once

#include <map>
#include <string>
#include <vector>

namespace teralune {

/// One group of a filter's options: what can be chosen, and what is.
struct FilterSection {
    std::map<std::string, bool> dict;
    /// The option texts are localization keys; otherwise they are shown as they are.
    bool localized = false;

    std::vector<std::string> selectedOptions() const;
};

} // namespace teralune
