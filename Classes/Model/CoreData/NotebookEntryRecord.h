#pragma once

#include <boost/json/array.hpp>
#include <boost/json/value.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace teralune {

/// One note as the server's list has it. Its texts belong to the JSON value that it was read from, which must
/// outlive it. A member of another type than expected counts as absent.
struct NotebookEntryRecord {
    /// Any JSON value may be read; one that is no object has nothing.
    static NotebookEntryRecord read(const boost::json::value& value);

    std::optional<std::string_view> id;
    std::optional<std::string_view> problem;
    std::optional<std::string_view> savedFrom;
    std::optional<std::string_view> lastChange;
    std::optional<std::string_view> date;
    std::optional<std::string_view> topic;
    std::optional<std::string_view> notes;
    std::optional<std::string_view> url;
    /// A number counts when it is 0 or 1.
    std::optional<bool> isFavorite;
    /// Null, or an array of texts and nothing else.
    const boost::json::array* tags = nullptr;

    /// A definition that came as an object is written as compact JSON.
    std::optional<std::string_view> graph() const;
    /// Has every text without which a note can't be stored.
    bool isComplete() const { return id && problem && savedFrom && lastChange && date; }

private:
    std::optional<std::string_view> graphText_;
    std::optional<std::string> graphWritten_;
};

} // namespace teralune
