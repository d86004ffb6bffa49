#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Result.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace teralune {

class ObjectContext;

/// The part of a list's notes that is read from the store when it is first asked for, for all of them at
/// once. Shared by the notes of the list; complete before the notes are handed out, but for that part. May be
/// read from any thread. A read that fails leaves nothing behind, and the next question reads again; the
/// first failure is reported. After the store is gone the part that was not read is absent.
class NotebookEntryBatch {
public:
    struct Details {
        std::optional<Date> lastChange;
        std::optional<std::string> savedFrom;
        std::optional<std::string> topic;
        std::optional<std::string> graph;
        std::optional<std::string> url;
        std::vector<std::string> tagStrings;
        bool isGone = false; ///< the store has the note no more
    };
    using FailureReporter = std::function<void(const Error&)>;

    /// A list of one note that is in no store.
    explicit NotebookEntryBatch(Details details);
    /// A list that is to be filled with append().
    NotebookEntryBatch(std::weak_ptr<ObjectContext> context, FailureReporter onFailure);

    /// Only while nobody else has the list.
    void append(std::int64_t rowID) { rowIDs_.push_back(rowID); }

    /// Empty while they can't be read. Stays where it is.
    const Details& details(std::size_t place) const;
    /// The same, telling a failed read from a note without details. Never null.
    Result<const Details*> readDetails(std::size_t place) const;
    /// Absent for a note in no store.
    std::optional<std::int64_t> rowID(std::size_t place) const;
    /// Null when the store is gone, or for a note in no store.
    std::shared_ptr<ObjectContext> context() const { return context_.lock(); }
    void reportFailure(const Error& error) const;

private:
    Result<std::vector<Details>> load(ObjectContext& context) const;

    std::weak_ptr<ObjectContext> context_;
    FailureReporter onFailure_;
    std::vector<std::int64_t> rowIDs_;
    mutable std::mutex publishing_;        ///< never held while the store is read
    mutable std::vector<Details> details_; ///< never changes once isLoaded_ is true
    mutable std::atomic<bool> isLoaded_ = false;
    mutable std::atomic<bool> hasFailed_ = false;
};

} // namespace teralune
