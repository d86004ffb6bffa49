#pragma once

#include "Classes/Model/CoreData/NotebookEntryRecord.h"
#include "Platform/Foundation/Date.h"

#include <boost/unordered/unordered_flat_map.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace teralune {

/// What has to be written so that the store follows the server's list, worked out without touching either:
/// records come in, then what is stored, and out come the rows that differ. The result is the same as if each
/// record were stored in turn after all tags had been deleted; what would end as it was is not written.
///
/// Used in this order, by one thread: add() and addUnusable() in the order of the list, and endList();
/// meetTag() for each stored tag and then meetEntry() for each stored entry, both in the order of their rows;
/// then the answers.
class MergePlan {
public:
    /// A note of the list: the records of one identifier, as the store ends up with them. The first decides
    /// the problem, the last everything else, and the tags of all are put together.
    struct Note {
        std::size_t first = 0;
        std::size_t last = 0;
        std::vector<std::uint32_t> tags; ///< places in tagTexts()
        bool isStored = false;
    };
    struct Record {
        NotebookEntryRecord fields;
        std::optional<std::int64_t> lastChange; ///< milliseconds
    };
    /// A row of the store; its texts need live only as long as the call that is given them.
    struct StoredEntry {
        std::int64_t id = 0;
        std::optional<std::string_view> remoteID;
        std::optional<std::int64_t> isFavorite;
        std::optional<std::int64_t> lastChange;
        std::optional<std::string_view> savedFrom;
        std::optional<std::string_view> topic;
        std::optional<std::string_view> notes;
        std::optional<std::string_view> graph;
        std::optional<std::string_view> url;
    };
    struct Update {
        std::int64_t entryID = 0;
        std::size_t note = 0;
    };
    struct NewLink {
        std::int64_t entryID = 0;
        std::uint32_t tag = 0; ///< a place in tagTexts()
    };
    struct OldLink {
        std::int64_t entryID = 0;
        std::int64_t tagID = 0;
    };

    MergePlan();
    void reserve(std::size_t recordCount);

    /// A record that is complete, with its parsed date.
    void add(NotebookEntryRecord record, std::optional<Date> lastChange);
    /// A record that is passed over. The entry of its identifier, where that can be read, is kept.
    void addUnusable(std::optional<std::string_view> id);

    /// Puts the tags of each note together.
    void endList();

    void meetTag(std::int64_t tagID, std::optional<std::string_view> text);
    /// With the rows of the tags that the entry bears, ascending.
    void meetEntry(const StoredEntry& entry, std::span<const std::int64_t> storedTagIDs);

    const std::vector<Record>& records() const { return records_; }
    /// In the order in which the list names them first; those that are not stored yet are to be inserted.
    const std::vector<Note>& notes() const { return notes_; }
    const std::vector<std::string_view>& tagTexts() const { return tagTexts_; }
    /// The row of each tag text; absent for those that are to be inserted.
    const std::vector<std::optional<std::int64_t>>& tagIDs() const { return tagIDs_; }
    const std::vector<Update>& updates() const { return updates_; }
    const std::vector<NewLink>& newLinks() const { return newLinks_; }
    const std::vector<OldLink>& oldLinks() const { return oldLinks_; }
    /// Tags that no note of the list bears.
    const std::vector<std::int64_t>& oldTags() const { return oldTags_; }
    /// Whether the list has that identifier; an entry whose identifier it lacks is to be deleted.
    bool isListed(std::optional<std::string_view> remoteID) const;

private:
    static constexpr std::size_t noNote = static_cast<std::size_t>(-1);

    /// Seeded afresh in each plan: a server can't choose texts that all fall together.
    struct SeededHash {
        using is_avalanching = void;
        std::uint64_t seed;
        std::size_t operator()(std::string_view text) const;
    };

    std::uint32_t place(std::string_view tagText);
    bool differs(const StoredEntry& entry, const Record& record) const;

    std::vector<Record> records_;
    std::vector<Note> notes_;
    boost::unordered_flat_map<std::string_view, std::size_t, SeededHash> noteOfID_;
    std::vector<std::string_view> tagTexts_;
    std::vector<std::optional<std::int64_t>> tagIDs_;
    boost::unordered_flat_map<std::string_view, std::uint32_t, SeededHash> placeOfTag_;
    std::vector<Update> updates_;
    std::vector<NewLink> newLinks_;
    std::vector<OldLink> oldLinks_;
    std::vector<std::int64_t> oldTags_;
    std::vector<std::pair<std::int64_t, std::uint32_t>> wanted_; ///< of the entry just met
};

} // namespace teralune
