#pragma once

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace teralune {

/// One row of a record's table: where a member stands in the JSON object. A table is a tuple of rows,
///
///     constexpr std::tuple fields{JsonField{"title", &Book::title}, JsonField{"pages", &Book::pages}};
///     Book Book::map(const boost::json::object& json) { return mapFields(json, fields); }
///
/// Mapping is lenient: a member whose key is missing, or whose value is of another type, keeps its default.
template<class Record, class Member>
struct JsonField {
    std::string_view key;
    Member Record::*member;
};
// GCC finds this by itself; tools that read older C++20 do not.
template<class Record, class Member>
JsonField(std::string_view, Member Record::*) -> JsonField<Record, Member>;

/// Each readJson assigns the value and returns true where the types fit; otherwise it leaves the member
/// alone. Whole numbers fit a double, and a double without a fraction fits a whole number.
inline bool readJson(const boost::json::value& json, std::string& member) {
    const boost::json::string* text = json.if_string();
    if (text)
        member.assign(text->data(), text->size());
    return text != nullptr;
}

inline bool readJson(const boost::json::value& json, bool& member) {
    const bool* truth = json.if_bool();
    if (truth)
        member = *truth;
    return truth != nullptr;
}

inline bool readJson(const boost::json::value& json, double& member) {
    if (!json.is_number())
        return false;
    member = json.to_number<double>();
    return true;
}

inline bool readJson(const boost::json::value& json, std::int64_t& member) {
    if (!json.is_number())
        return false;
    // A number that is too large or has a fraction is refused rather than rounded.
    boost::system::error_code error;
    const auto number = json.to_number<std::int64_t>(error);
    if (!error)
        member = number;
    return !error;
}

template<class Record>
concept JsonRecord = requires(const boost::json::object& json) {
    { Record::map(json) } -> std::same_as<Record>;
};

template<JsonRecord Record>
bool readJson(const boost::json::value& json, Record& member) {
    const boost::json::object* object = json.if_object();
    if (object)
        member = Record::map(*object);
    return object != nullptr;
}

/// A list fits when each of its elements does.
template<class Element>
bool readJson(const boost::json::value& json, std::vector<Element>& member) {
    const boost::json::array* array = json.if_array();
    if (!array)
        return false;
    std::vector<Element> elements(array->size());
    for (std::size_t index = 0; index < elements.size(); ++index)
        if (!readJson((*array)[index], elements[index]))
            return false;
    member = std::move(elements);
    return true;
}

template<class Value>
bool readJson(const boost::json::value& json, std::optional<Value>& member) {
    Value value{};
    if (!readJson(json, value))
        return false;
    member = std::move(value);
    return true;
}

template<class Record, class... Members>
Record mapFields(const boost::json::object& json, const std::tuple<JsonField<Record, Members>...>& fields) {
    Record record;
    const auto read = [&](const auto& field) {
        if (const boost::json::value* value = json.if_contains(field.key))
            readJson(*value, record.*field.member);
    };
    std::apply([&](const auto&... field) { (read(field), ...); }, fields);
    return record;
}

} // namespace teralune
