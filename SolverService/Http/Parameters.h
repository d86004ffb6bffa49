#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace teralune::service {

/// The decoded items of a query string or of a form body, in the order in which they were sent.
/// Reading is lenient, as browsers' forms are read: an escape that is none stands for itself.
class Parameters {
public:
    Parameters() = default;
    explicit Parameters(std::vector<std::pair<std::string, std::string>> items) : items_(std::move(items)) {}

    /// Adds the items of text in the form a=1&b=2.
    void read(std::string_view text);

    /// The first item of that name.
    std::optional<std::string> value(std::string_view name) const;
    /// The first item of that name, or the empty text.
    std::string text(std::string_view name) const { return value(name).value_or(std::string()); }

    const std::vector<std::pair<std::string, std::string>>& items() const { return items_; }

    /// Whether every name and value is well-formed UTF-8.
    bool areText() const;

private:
    std::vector<std::pair<std::string, std::string>> items_;
};

/// Decodes percent escapes, and "+" as a blank.
std::string decodeFormText(std::string_view text);

/// Whether the bytes are well-formed UTF-8, the only text that may get into a JSON reply.
bool isText(std::string_view bytes);

} // namespace teralune::service
