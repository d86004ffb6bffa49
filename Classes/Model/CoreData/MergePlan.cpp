#include "Classes/Model/CoreData/MergePlan.h"

#include <boost/json/string.hpp>

#include <algorithm>
#include <cstring>
#include <random>

namespace teralune {
namespace {

std::uint64_t randomSeed() {
    std::random_device device;
    return (static_cast<std::uint64_t>(device()) << 32) | device();
}

std::uint64_t mixed(std::uint64_t left, std::uint64_t right) {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(left) * right;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

} // namespace

std::size_t MergePlan::SeededHash::operator()(std::string_view text) const {
    constexpr std::uint64_t oddFraction = 0x9E3779B97F4A7C15U;
    std::uint64_t state = seed ^ (text.size() * oddFraction);
    while (!text.empty()) {
        std::uint64_t word = 0;
        const std::size_t length = std::min(text.size(), sizeof(word));
        std::memcpy(&word, text.data(), length);
        state = mixed(state ^ word, seed | 1U) + oddFraction;
        text.remove_prefix(length);
    }
    return static_cast<std::size_t>(mixed(state, oddFraction));
}

MergePlan::MergePlan() : noteOfID_(0, SeededHash{randomSeed()}), placeOfTag_(0, SeededHash{randomSeed()}) {}

void MergePlan::reserve(std::size_t recordCount) {
    records_.reserve(recordCount);
    notes_.reserve(recordCount);
    noteOfID_.reserve(recordCount);
}

std::uint32_t MergePlan::place(std::string_view tagText) {
    const auto [found, isNew] =
        placeOfTag_.try_emplace(tagText, static_cast<std::uint32_t>(tagTexts_.size()));
    if (isNew) {
        tagTexts_.push_back(tagText);
        tagIDs_.emplace_back();
    }
    return found->second;
}

void MergePlan::add(NotebookEntryRecord record, std::optional<Date> lastChange) {
    const auto [found, isNew] = noteOfID_.try_emplace(*record.id, notes_.size());
    if (isNew || found->second == noNote) {
        found->second = notes_.size();
        notes_.push_back({.first = records_.size(), .last = records_.size(), .tags = {}, .isStored = false});
    }
    Note& note = notes_[found->second];
    note.last = records_.size();
    if (record.tags != nullptr) {
        for (const boost::json::value& tag : *record.tags) {
            const boost::json::string& text = tag.get_string();
            if (!text.empty()) {
                note.tags.push_back(place(std::string_view(text.data(), text.size())));
            }
        }
    }
    const auto milliseconds =
        lastChange ? std::optional<std::int64_t>(lastChange->time_since_epoch().count()) : std::nullopt;
    records_.push_back({std::move(record), milliseconds});
}

void MergePlan::addUnusable(std::optional<std::string_view> id) {
    if (id) {
        noteOfID_.try_emplace(*id, noNote);
    }
}

void MergePlan::endList() {
    // Not while records come in: a list that names one note half a million times would be sorted as often.
    for (Note& note : notes_) {
        std::sort(note.tags.begin(), note.tags.end());
        note.tags.erase(std::unique(note.tags.begin(), note.tags.end()), note.tags.end());
    }
}

void MergePlan::meetTag(std::int64_t tagID, std::optional<std::string_view> text) {
    const auto found = text ? placeOfTag_.find(*text) : placeOfTag_.end();
    if (found == placeOfTag_.end() || tagIDs_[found->second]) {
        oldTags_.push_back(tagID);
    } else {
        tagIDs_[found->second] = tagID;
    }
}

bool MergePlan::differs(const StoredEntry& entry, const Record& record) const {
    const NotebookEntryRecord& fields = record.fields;
    const bool hasSameStar =
        fields.isFavorite ? entry.isFavorite == std::int64_t{*fields.isFavorite ? 1 : 0} : !entry.isFavorite;
    return !hasSameStar || entry.lastChange != record.lastChange || entry.savedFrom != fields.savedFrom ||
           entry.topic != fields.topic || entry.notes != fields.notes || entry.url != fields.url ||
           entry.graph != fields.graph();
}

void MergePlan::meetEntry(const StoredEntry& entry, std::span<const std::int64_t> storedTagIDs) {
    wanted_.clear();
    const auto found = entry.remoteID ? noteOfID_.find(*entry.remoteID) : noteOfID_.end();
    // Of several rows with one identifier the first is the note; the others only lose their tags.
    if (found != noteOfID_.end() && found->second != noNote && !notes_[found->second].isStored) {
        Note& note = notes_[found->second];
        note.isStored = true;
        if (differs(entry, records_[note.last])) {
            updates_.push_back({entry.id, found->second});
        }
        for (const std::uint32_t tag : note.tags) {
            if (tagIDs_[tag]) {
                wanted_.emplace_back(*tagIDs_[tag], tag);
            } else {
                newLinks_.push_back({entry.id, tag});
            }
        }
        std::sort(wanted_.begin(), wanted_.end());
    }
    auto stored = storedTagIDs.begin();
    for (const auto& [tagID, tag] : wanted_) {
        for (; stored != storedTagIDs.end() && *stored < tagID; ++stored) {
            oldLinks_.push_back({entry.id, *stored});
        }
        if (stored != storedTagIDs.end() && *stored == tagID) {
            ++stored;
        } else {
            newLinks_.push_back({entry.id, tag});
        }
    }
    for (; stored != storedTagIDs.end(); ++stored) {
        oldLinks_.push_back({entry.id, *stored});
    }
}

bool MergePlan::isListed(std::optional<std::string_view> remoteID) const {
    return remoteID && noteOfID_.contains(*remoteID);
}

} // namespace teralune
