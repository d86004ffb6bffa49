#include "Classes/Model/CoreData/NotebookEntryRecord.h"

#include "Platform/Foundation/JsonMapping.h"

#include <boost/json/object.hpp>

#include <algorithm>

namespace teralune {
namespace {

std::optional<std::string_view> textOf(const boost::json::value& value) {
    if (const boost::json::string* const text = value.if_string()) {
        return std::string_view(text->data(), text->size());
    }
    return std::nullopt;
}

std::optional<bool> flagOf(const boost::json::value& value) {
    if (const bool* const flag = value.if_bool()) {
        return *flag;
    }
    if (value.is_number()) {
        const auto number = value.to_number<double>();
        return number == 0 ? std::optional(false) : number == 1 ? std::optional(true) : std::nullopt;
    }
    return std::nullopt;
}

const boost::json::array* textsOf(const boost::json::value& value) {
    const boost::json::array* const array = value.if_array();
    const bool areTexts =
        array != nullptr &&
        std::all_of(array->begin(), array->end(), [](const auto& element) { return element.is_string(); });
    return areTexts ? array : nullptr;
}

} // namespace

NotebookEntryRecord NotebookEntryRecord::read(const boost::json::value& value) {
    NotebookEntryRecord record;
    const boost::json::object* const object = value.if_object();
    if (object == nullptr) {
        return record;
    }
    const auto text = [object](std::string_view key) -> std::optional<std::string_view> {
        const boost::json::value* const member = object->if_contains(key);
        return member != nullptr ? textOf(*member) : std::nullopt;
    };
    record.id = text("_id");
    record.problem = text("problem");
    record.savedFrom = text("savedFrom");
    record.lastChange = text("lastChange");
    record.date = text("date");
    record.topic = text("topic");
    record.notes = text("notes");
    record.url = text("url");
    if (const boost::json::value* const isFavorite = object->if_contains("isFavorite")) {
        record.isFavorite = flagOf(*isFavorite);
    }
    if (const boost::json::value* const tags = object->if_contains("tags")) {
        record.tags = textsOf(*tags);
    }
    if (const boost::json::value* const graph = object->if_contains("graph")) {
        record.graphText_ = textOf(*graph);
        if (graph->is_object()) {
            record.graphWritten_ = serializeJson(*graph);
        }
    }
    return record;
}

std::optional<std::string_view> NotebookEntryRecord::graph() const {
    if (graphWritten_) {
        return *graphWritten_;
    }
    return graphText_;
}

} // namespace teralune
