#pragma once

#include "Platform/Foundation/Result.h"

#include <filesystem>
#include <optional>

namespace teralune {

/// How another database takes the place of a file that nobody uses any more, together with its log, so that a
/// kill at any moment leaves one or the other. Names can be changed only one by one, and a new file beside an
/// old log would be ruined by it. So the new one first gets a name that says "take me", and whoever comes by
/// then finishes the move:
///
///     store.sqlite-repairing      the draft, being written; worth nothing
///     store.sqlite-repaired       whole, and to be put in place before anybody opens store.sqlite
///     store.damaged-1.sqlite      the old file, its log beside it; the number is the first that is free
///
/// Nothing is ever overwritten, and the old file is never removed.

/// Where the new database is to be written.
std::filesystem::path replacementDraft(const std::filesystem::path& file);
/// Where whoever writes it may keep another database meanwhile.
std::filesystem::path replacementScratch(const std::filesystem::path& file);
/// Removes a draft that was given up, and the other one. Whoever has the file open may do it at any time: no
/// draft is written meanwhile.
void discardReplacementDraft(const std::filesystem::path& file);

/// Puts the draft, which must be whole, on disk and closed, into the place of the file, which the caller has
/// locked. Returns where the old file lies now. A failure either leaves all as it was or, once the draft has
/// the name that says "take me", leaves the move to whoever comes by next.
Result<std::filesystem::path> replaceByDraft(const std::filesystem::path& file);
/// Finishes a move that was interrupted; to be called before the file is opened. Waits for another process
/// that is just doing it. Returns where the old file lies if there was anything to do.
Result<std::optional<std::filesystem::path>> finishReplacement(const std::filesystem::path& file);

} // namespace teralune
