#pragma once

#include "Classes/Interfaces/NotebookEndpointsType.h"
#include "Platform/Foundation/Result.h"

#include <optional>
#include <string>
#include <vector>

namespace teralune {

struct CommandContext;

struct TagWishes {
    std::vector<std::string> add;
    std::vector<std::string> remove;
};

/// The changes of a note. The server is asked first, and the store changed once it has agreed; the star alone
/// is changed at once and set back when the server refuses. Each fails unless somebody is signed in, and for
/// a problem that no note has. Main thread.
Result<void> saveNote(const CommandContext& context, const std::string& problem,
                      const std::optional<std::string>& topic, const std::string& savedFrom);
Result<void> starNote(const CommandContext& context, const std::string& problem, Favorite favorite);
Result<void> annotateNote(const CommandContext& context, const std::string& problem, const std::string& text);
Result<void> tagNote(const CommandContext& context, const std::string& problem, const TagWishes& wishes);
Result<void> deleteNotes(const CommandContext& context, const std::vector<std::string>& problems);

} // namespace teralune
