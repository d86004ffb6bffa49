#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace teralune {

/// Header fields in the order in which they were written; names compare without case.
class HttpHeaders {
public:
    using Field = std::pair<std::string, std::string>;

    HttpHeaders() = default;
    HttpHeaders(std::initializer_list<Field> fields) : fields_(fields) {}

    /// The values of all fields of that name, joined with ", " (with ";" for Cookie); absent without any.
    std::optional<std::string> value(std::string_view name) const;
    bool contains(std::string_view name) const;
    /// Replaces every field of that name.
    void set(std::string_view name, std::string value);
    /// Adds a field and leaves those of the same name as they are.
    void add(std::string name, std::string value);
    void remove(std::string_view name);
    /// Lengthens the value of the field that was added last.
    void appendToLast(std::string_view addition) { fields_.back().second.append(addition); }

    auto begin() const { return fields_.begin(); }
    auto end() const { return fields_.end(); }
    std::size_t size() const { return fields_.size(); }

    friend bool operator==(const HttpHeaders&, const HttpHeaders&) = default;

private:
    std::vector<Field> fields_;
};

} // namespace teralune
