#pragma once

#include "Classes/Model/CoreData/FilterSection.h"
#include "Classes/Model/CoreData/IndexPath.h"
#include "Classes/Model/CoreData/LocalizedOrderedKeys.h"
#include "Classes/Model/CoreData/Predicate.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace teralune {

/// The user's choice of which notes the notebook shows. Within one section the options are alternatives; the
/// sections narrow each other. A value: a copy is independent.
///
/// As a table it has four sections: 0 the source of a note, 1 favourites only (exactly one row), 2 topics,
/// 3 tags. The rows of a section stand in the order of their localized texts, also where the texts are shown
/// as they are.
class Filter {
public:
    /// The localizer gives the texts of the library's string table; without one they come from the process's
    /// own platform services.
    explicit Filter(Localizer localizer = {});

    bool filterFavorites = false;
    FilterSection typeFilter{.dict = {}, .localized = true};
    FilterSection topicFilter;
    FilterSection tagFilter;

    Filter copyFilter() const { return *this; }

    int numberOfRows(int section) const;
    /// The header of a section; absent for one that has no options and for any that does not exist.
    std::optional<std::string> text(int section) const;
    /// The text of a row; absent where there is none. Puts the whole section in order for it: a table asks
    /// texts() instead.
    std::optional<std::string> text(IndexPath indexPath) const;
    /// The texts of all rows of a section.
    std::vector<std::string> texts(int section) const;
    /// Chooses a row; choosing it again changes nothing. A row beyond the section's options is a fatal error.
    void updateSelected(IndexPath indexPath);
    std::vector<IndexPath> allSelected() const;
    /// Type, topic, tag.
    std::array<FilterSection, 3> allSections() const { return {typeFilter, topicFilter, tagFilter}; }

    bool isBlank() const;
    /// Names every chosen criterion in a fixed order: two filters have equal descriptions exactly when they
    /// choose the same.
    std::string description() const;
    /// Absent when nothing is chosen.
    std::optional<Predicate> predicate() const;

private:
    const FilterSection* section(int section) const;

    Localizer localizer_;
};

} // namespace teralune
