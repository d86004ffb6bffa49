#pragma once

#include <string_view>

namespace teralune {

/// A tag of the notebook. Outside the store a tag is its text alone, exactly as the user typed it; one text
/// is one tag, shared by the notes that bear it.
struct NotebookEntryTag {
    static constexpr std::string_view EntityName = "NotebookEntryTag";
};

} // namespace teralune
