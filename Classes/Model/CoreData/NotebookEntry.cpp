#include "Classes/Model/CoreData/NotebookEntry.h"

#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Model/CoreData/NotebookEntryBatch.h"
#include "Classes/Model/CoreData/NotebookTagLinks.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Platform/Database/Database.h"
#include "Platform/Foundation/Printer.h"

#include <algorithm>
#include <utility>

namespace teralune {
namespace {

void recordAndPrint(const Error& error, ObjectContext& context, CrashReporterType& crashReporter,
                    const std::string& message = "Could not update notebook entry: ") {
    crashReporter.recordError(error);
    context.printer().print(message + error.localizedDescription);
}

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

Result<std::vector<std::string>> NotebookEntry::readTagStrings() const {
    if (changedTags_ != nullptr) {
        return *changedTags_;
    }
    const Result<const NotebookEntryBatch::Details*> details = list_->readDetails(place_);
    if (!details) {
        return details.error();
    }
    return details.value()->tagStrings;
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
    Result<void> saved;
    if (const std::optional<std::int64_t> row = rowID()) {
        saved = context.performAndWait(
            [&](Database& database) { return NotebookTagLinks(database).add(*row, *tags, outcome); });
    } else {
        outcome.borne = *tags;
        std::erase(outcome.borne, std::string());
    }
    for (const NotebookTagLinks::Outcome::Failure& failure : outcome.failures) {
        recordAndPrint(failure.error, context, crashReporter,
                       "Could not fetch existing notebook entry tags for '" + failure.tag + "': ");
    }
    if (!saved) {
        recordAndPrint(saved.error(), context, crashReporter);
        return;
    }
    // Tags that could not be read before are read with the change when they are next asked for.
    if (before) {
        std::vector<std::string> changed = before.value();
        for (std::string& tag : outcome.borne) {
            if (std::find(changed.begin(), changed.end(), tag) == changed.end()) {
                changed.push_back(std::move(tag));
            }
        }
        changedTags_ = std::make_shared<const std::vector<std::string>>(std::move(changed));
    }
}

void NotebookEntry::removeTags(const std::vector<std::string>& tags, ObjectContext& context,
                               CrashReporterType& crashReporter) {
    const Result<std::vector<std::string>> before = readTagStrings();
    if (const std::optional<std::int64_t> row = rowID()) {
        const Result<void> saved = context.performAndWait(
            [&](Database& database) { return NotebookTagLinks(database).remove(*row, tags); });
        if (!saved) {
            recordAndPrint(saved.error(), context, crashReporter);
            return;
        }
    }
    if (before) {
        std::vector<std::string> changed = before.value();
        for (const std::string& tag : tags) {
            std::erase(changed, tag);
        }
        changedTags_ = std::make_shared<const std::vector<std::string>>(std::move(changed));
    }
}

void NotebookEntry::setNotes(const std::string& notes, ObjectContext& context,
                             CrashReporterType& crashReporter) {
    if (const std::optional<std::int64_t> row = rowID()) {
        const Result<void> saved = context.performAndWait([&](Database& database) {
            return database.statement("UPDATE entries SET notes = ? WHERE id = ?").bindAll(notes, *row).run();
        });
        if (!saved) {
            recordAndPrint(saved.error(), context, crashReporter);
            return;
        }
    }
    listed_.notes = notes;
}

} // namespace teralune
