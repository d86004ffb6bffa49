#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Result.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teralune {

class CrashReporterType;
class NotebookEntryBatch;
class ObjectContext;

/// What a list holds of each note from the start.
struct ListedAttributes {
    std::optional<std::string> remoteID;
    std::optional<std::string> problem;
    std::optional<std::string> notes;
    std::optional<bool> isFavorite;
};

/// What a note is made of, for a note that is in no store (the preview of a shared list).
struct NotebookEntryValues {
    std::optional<std::string> remoteID = {};
    std::optional<std::string> problem = {};
    std::optional<std::string> notes = {};
    std::optional<bool> isFavorite = {};
    std::optional<Date> lastChange = {};
    std::optional<std::string> savedFrom = {};
    std::optional<std::string> topic = {};
    std::optional<std::string> graph = {};
    std::optional<std::string> url = {};
    std::vector<std::string> tagStrings = {};
};

/// A note of the notebook, as a value: it stays valid when the note is changed or deleted, and also when the
/// store is gone. May be read on any thread; one value is changed by one thread at a time.
///
/// A list holds the identifier, the problem, the star and the remarks of each note. The other attributes are
/// read from the store when one of them is first asked for, for all notes of that list in one go; those of a
/// note that was deleted meanwhile are absent. While they can't be read they are absent too, and each
/// question tries again; the first failure is recorded and printed. Each operation that changes the store
/// changes this value and none of its copies.
class NotebookEntry {
public:
    static constexpr std::string_view EntityName = "NotebookEntry";

    /// A note in no store.
    explicit NotebookEntry(NotebookEntryValues values);
    /// For the repository: the note at a place of a list that was read.
    NotebookEntry(std::shared_ptr<const NotebookEntryBatch> list, std::size_t place,
                  ListedAttributes&& loaded);
    ~NotebookEntry();
    NotebookEntry(const NotebookEntry&);
    NotebookEntry(NotebookEntry&&) noexcept;
    NotebookEntry& operator=(const NotebookEntry&);
    NotebookEntry& operator=(NotebookEntry&&) noexcept;

    /// The server's identifier, the key of the merge.
    const std::optional<std::string>& remoteID() const { return listed_.remoteID; }
    /// The problem as the user typed it, the key by which a note is looked up.
    const std::optional<std::string>& problem() const { return listed_.problem; }
    /// The user's remarks.
    const std::optional<std::string>& notes() const { return listed_.notes; }
    const std::optional<bool>& isFavorite() const { return listed_.isFavorite; }

    const std::optional<Date>& lastChange() const;
    const std::optional<std::string>& savedFrom() const;
    const std::optional<std::string>& topic() const;
    /// A graph's definition as JSON text; empty or absent for a plain problem.
    const std::optional<std::string>& graph() const;
    const std::optional<std::string>& url() const;
    /// In no particular order.
    const std::vector<std::string>& tagStrings() const;
    /// The same for those who pass the tags on: a server that is sent the tags of a failed read would forget
    /// those it has.
    Result<std::vector<std::string>> readTagStrings() const;

    /// The cached solution and when it was cached; read from the store at each call.
    std::optional<std::string> stepsData() const;
    std::optional<Date> lastCached() const;

    /// Adds tags to those that the note has; the empty text is no tag, and an absent list changes nothing. A
    /// tag that can't be looked up is recorded, printed and left out.
    void setTags(const std::optional<std::vector<std::string>>& tags, ObjectContext& context,
                 CrashReporterType& crashReporter);
    /// Takes tags off the note; what it does not bear is passed over. A failure is recorded and printed.
    void removeTags(const std::vector<std::string>& tags, ObjectContext& context,
                    CrashReporterType& crashReporter);
    /// Replaces the remarks. A failure is recorded and printed.
    void setNotes(const std::string& notes, ObjectContext& context, CrashReporterType& crashReporter);

    /// The note's row in the store; absent for a note in no store.
    std::optional<std::int64_t> rowID() const;

private:
    std::shared_ptr<const NotebookEntryBatch> list_;
    std::size_t place_ = 0;
    ListedAttributes listed_;
    std::shared_ptr<const std::vector<std::string>> changedTags_; ///< set once the tags were changed
};

} // namespace teralune
