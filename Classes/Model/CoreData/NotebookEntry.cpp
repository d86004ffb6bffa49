#include "Classes/Model/CoreData/NotebookEntry.h"

#include "Classes/Model/CoreData/NotebookEntryBatch.h"
#include "Classes/Model/CoreData/NotebookTagLinks.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Platform/Database/Database.h"

#include <algorithm>
#include <new>
#include <utility>

namespace teralune {
namespace {

constexpr std::string_view couldNotUpdate = "Could not update notebook entry: ";

using Texts = std::shared_ptr<const std::vector<std::string>>;

template<class Value, class Read>
std::optional<Value> readSteps(const NotebookEntryBatch& list, std::size_t place, std::string_view sql,
                               Read&& read) {
    const std::shared_ptr<ObjectContext> context = list.context();
    const std::optional<std::int64_t> row = list.rowID(place);
    if (context == nullptr || !row) {
        return std::nullopt;
    }
    std::optional<Value> value;
    const Result<void> fetched = context->fetchAndWait([&](Database& database) -> Result<void> {
        Statement query = database.statement(sql);
        query.bindAll(*row);
        if (query.nextRow()) {
            value = read(query);
        }
        return query.result();
    });
    if (!fetched) {
        list.reportFailure(fetched.error());
        return std::nullopt;
    }
    return value;
}

/// Changes the store, if the note is in one, and makes what the note then says of itself inside that change:
/// so nothing is stored for which the note has no memory.
template<class InStore, class InNote>
Result<void> change(ObjectContext& context, std::optional<std::int64_t> row, const InStore& inStore,
                    const InNote& inNote) try {
    if (!row) {
        inNote();
        return {};
    }
    return context.performAndWait([&](Database& database) {
        Result<void> stored = inStore(database, *row);
        if (stored) {
            inNote();
        }
        return stored;
    });
} catch (const std::bad_alloc&) {
    return outOfMemoryError();
}

} // namespace

NotebookEntry::NotebookEntry(NotebookEntryValues values)
    : list_(std::make_shared<const NotebookEntryBatch>(NotebookEntryBatch::Details{
          values.lastChange, std::move(values.savedFrom), std::move(values.topic), std::move(values.graph),
          std::move(values.url), std::move(values.tagStrings)}))
    , listed_{std::move(values.remoteID), std::move(values.problem), std::move(values.notes),
              values.isFavorite} {}

NotebookEntry::NotebookEntry(std::shared_ptr<const NotebookEntryBatch> list, std::size_t place,
                             ListedAttributes&& loaded)
    : list_(std::move(list))
    , place_(place)
    , listed_(std::move(loaded)) {}

NotebookEntry::~NotebookEntry() = default;
NotebookEntry::NotebookEntry(const NotebookEntry&) = default;
NotebookEntry::NotebookEntry(NotebookEntry&&) noexcept = default;
NotebookEntry& NotebookEntry::operator=(const NotebookEntry&) = default;
NotebookEntry& NotebookEntry::operator=(NotebookEntry&&) noexcept = default;

const std::optional<Date>& NotebookEntry::lastChange() const {
    return list_->details(place_).lastChange;
}
const std::optional<std::string>& NotebookEntry::savedFrom() const {
    return list_->details(place_).savedFrom;
}
const std::optional<std::string>& NotebookEntry::topic() const {
    return list_->details(place_).topic;
}
const std::optional<std::string>& NotebookEntry::graph() const {
    return list_->details(place_).graph;
}
const std::optional<std::string>& NotebookEntry::url() const {
    return list_->details(place_).url;
}

const std::vector<std::string>& NotebookEntry::tagStrings() const {
    return changedTags_ != nullptr ? *changedTags_ : list_->details(place_).tagStrings;
}

Result<std::vector<std::string>> NotebookEntry::readTagStrings() const try {
    if (changedTags_ != nullptr) {
        return *changedTags_;
    }
    const Result<const NotebookEntryBatch::Details*> details = list_->readDetails(place_);
    if (!details) {
        return details.error();
    }
    if (details.value()->isGone) {
        return storeError(StoreErrorCode::noNote, "The note is no longer in the notebook.");
    }
    return details.value()->tagStrings;
} catch (const std::bad_alloc&) {
    return outOfMemoryError();
}

std::optional<std::string> NotebookEntry::stepsData() const {
    return readSteps<std::string>(*list_, place_, "SELECT stepsData FROM steps WHERE entryID = ?",
                                  [](Statement& row) { return row.optionalString(0); });
}

std::optional<Date> NotebookEntry::lastCached() const {
    const auto milliseconds =
        readSteps<std::int64_t>(*list_, place_, "SELECT lastCached FROM steps WHERE entryID = ?",
                                [](Statement& row) { return row.optionalInteger(0); });
    return milliseconds ? std::optional(Date(std::chrono::milliseconds(*milliseconds))) : std::nullopt;
}

std::optional<std::int64_t> NotebookEntry::rowID() const {
    return list_->rowID(place_);
}

void NotebookEntry::setTags(const std::optional<std::vector<std::string>>& tags, ObjectContext& context,
                            CrashReporterType& crashReporter) {
    if (!tags) {
        return;
    }
    const Result<std::vector<std::string>> before = readTagStrings();
    NotebookTagLinks::Outcome outcome;
    Texts after;
    const Result<void> saved = change(
        context, rowID(),
        [&](Database& database, std::int64_t row) {
            return NotebookTagLinks(database).add(row, *tags, outcome);
        },
        [&] {
            if (!rowID()) {
                outcome.borne = *tags;
                std::erase(outcome.borne, std::string());
            }
            // Tags that could not be read before are read with the change when they are next asked for.
            if (before) {
                std::vector<std::string> texts = before.value();
                for (std::string& tag : outcome.borne) {
                    if (std::find(texts.begin(), texts.end(), tag) == texts.end()) {
                        texts.push_back(std::move(tag));
                    }
                }
                after = std::make_shared<const std::vector<std::string>>(std::move(texts));
            }
        });
    for (const NotebookTagLinks::Outcome::Failure& failure : outcome.failures) {
        reportStoreError(crashReporter, context.printer(),
                         {"Could not fetch existing notebook entry tags for '", failure.tag, "': "},
                         failure.error);
    }
    if (!saved) {
        reportStoreError(crashReporter, context.printer(), {couldNotUpdate}, saved.error());
    } else if (after != nullptr) {
        changedTags_ = std::move(after);
    }
}

void NotebookEntry::removeTags(const std::vector<std::string>& tags, ObjectContext& context,
                               CrashReporterType& crashReporter) {
    const Result<std::vector<std::string>> before = readTagStrings();
    Texts after;
    const Result<void> saved = change(
        context, rowID(),
        [&](Database& database, std::int64_t row) { return NotebookTagLinks(database).remove(row, tags); },
        [&] {
            if (before) {
                std::vector<std::string> texts = before.value();
                for (const std::string& tag : tags) {
                    std::erase(texts, tag);
                }
                after = std::make_shared<const std::vector<std::string>>(std::move(texts));
            }
        });
    if (!saved) {
        reportStoreError(crashReporter, context.printer(), {couldNotUpdate}, saved.error());
    } else if (after != nullptr) {
        changedTags_ = std::move(after);
    }
}

void NotebookEntry::setNotes(const std::string& notes, ObjectContext& context,
                             CrashReporterType& crashReporter) {
    std::optional<std::string> after;
    const Result<void> saved = change(
        context, rowID(),
        [&](Database& database, std::int64_t row) {
            return database.statement("UPDATE entries SET notes = ? WHERE id = ?").bindAll(notes, row).run();
        },
        [&] { after = notes; });
    if (!saved) {
        reportStoreError(crashReporter, context.printer(), {couldNotUpdate}, saved.error());
    } else {
        listed_.notes = std::move(after);
    }
}

} // namespace teralune
