#include "Classes/Model/CoreData/NotebookEntryBatch.h"

#include "Classes/Model/CoreData/ObjectContext.h"
#include "Classes/Model/CoreData/StoreError.h"
#include "Platform/Database/Database.h"

#include <new>
#include <utility>

namespace teralune {
namespace {

// The places of the list travel to SQLite as one JSON text, so that any number of rows is one look-up each in
// one statement.
constexpr const char* detailsQuery =
    "SELECT list.key, entries.lastChange, entries.savedFrom, entries.topic, entries.graph, entries.url "
    "FROM json_each(?1) AS list CROSS JOIN entries ON entries.id = list.value";
constexpr const char* tagsQuery = "SELECT list.key, tags.tagText FROM json_each(?1) AS list "
                                  "CROSS JOIN links ON links.entryID = list.value "
                                  "CROSS JOIN tags ON tags.id = links.tagID WHERE tags.tagText IS NOT NULL";

std::string jsonArray(const std::vector<std::int64_t>& numbers) {
    std::string text = "[";
    for (const std::int64_t number : numbers) {
        text += text.size() > 1 ? "," : "";
        text += std::to_string(number);
    }
    text += ']';
    return text;
}

} // namespace

NotebookEntryBatch::NotebookEntryBatch(Details details) {
    details_.push_back(std::move(details));
    isLoaded_ = true;
}

NotebookEntryBatch::NotebookEntryBatch(std::weak_ptr<ObjectContext> context, FailureReporter onFailure)
    : context_(std::move(context))
    , onFailure_(std::move(onFailure)) {}

const NotebookEntryBatch::Details& NotebookEntryBatch::details(std::size_t place) const {
    static const Details none;
    const Result<const Details*> read = readDetails(place);
    return read ? *read.value() : none;
}

Result<const NotebookEntryBatch::Details*> NotebookEntryBatch::readDetails(std::size_t place) const try {
    static const Details none;
    if (!isLoaded_) {
        const std::shared_ptr<ObjectContext> context = context_.lock();
        if (context == nullptr) {
            return storeError(StoreErrorCode::noStore, "No store is open.");
        }
        Result<std::vector<Details>> loaded = load(*context);
        if (!loaded) {
            reportFailure(loaded.error());
            return loaded.error();
        }
        // Of several threads that have read at once, the first is heard.
        const std::lock_guard lock(publishing_);
        if (!isLoaded_) {
            details_ = std::move(loaded).value();
            isLoaded_ = true;
        }
    }
    return place < details_.size() ? &details_[place] : &none;
} catch (const std::bad_alloc&) {
    return outOfMemoryError();
}

std::optional<std::int64_t> NotebookEntryBatch::rowID(std::size_t place) const {
    if (place >= rowIDs_.size()) {
        return std::nullopt;
    }
    return rowIDs_[place];
}

void NotebookEntryBatch::reportFailure(const Error& error) const {
    if (!hasFailed_.exchange(true) && onFailure_) {
        onFailure_(error);
    }
}

Result<std::vector<NotebookEntryBatch::Details>> NotebookEntryBatch::load(ObjectContext& context) const {
    std::vector<Details> loaded;
    const Result<void> read = context.fetchAndWait([&](Database& database) -> Result<void> {
        Details gone;
        gone.isGone = true;
        loaded.assign(rowIDs_.size(), gone);
        const std::string places = jsonArray(rowIDs_);
        Statement query = database.statement(detailsQuery);
        query.bindAll(places);
        while (query.nextRow()) {
            Details& details = loaded[static_cast<std::size_t>(query.integer(0))];
            details.isGone = false;
            if (const auto milliseconds = query.optionalInteger(1)) {
                details.lastChange = Date(std::chrono::milliseconds(*milliseconds));
            }
            details.savedFrom = query.optionalString(2);
            details.topic = query.optionalString(3);
            details.graph = query.optionalString(4);
            details.url = query.optionalString(5);
        }
        if (Result<void> result = query.result(); !result) {
            return result;
        }
        Statement tags = database.statement(tagsQuery);
        tags.bindAll(places);
        while (tags.nextRow()) {
            loaded[static_cast<std::size_t>(tags.integer(0))].tagStrings.emplace_back(tags.text(1));
        }
        return tags.result();
    });
    if (!read) {
        return read.error();
    }
    return loaded;
}

} // namespace teralune
