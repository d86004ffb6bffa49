#include "Classes/Networking/ResponseBodySummary.h"

#include "Platform/Foundation/Characters.h"
#include "Platform/Foundation/StringFormat.h"
#include "Platform/Foundation/Utf8.h"

namespace teralune {
namespace {

constexpr std::size_t shownOfText = 100;
constexpr std::size_t shownOfEntry = 20;
constexpr std::string_view nothing = "<nil or omitted>";

std::string summary(std::monostate) {
    return std::string(nothing);
}

std::string summary(std::string_view data) {
    if (!isValidUtf8(data))
        return std::string(nothing);
    const std::size_t count = characterCount(data);
    if (count <= shownOfText)
        return std::string(data);
    return formatString("%@ ... (and %d more)",
                        {firstCharacters(data, shownOfText), static_cast<std::int64_t>(count - shownOfText)});
}

std::string entryText(const boost::json::value& value) {
    const boost::json::string* text = value.if_string();
    if (!text)
        return {};
    std::string shown = firstCharacters(*text, shownOfEntry);
    return shown.size() == text->size() ? shown : shown + "…";
}

std::string summary(const boost::json::value* value) {
    if (value && value->is_array())
        return "array of " + std::to_string(value->get_array().size());
    if (!value || !value->is_object())
        return std::string(nothing);
    std::string text;
    for (const auto& [key, entry] : value->get_object())
        text.append(text.empty() ? "object: " : ", ").append(key).append(": ").append(entryText(entry));
    return text.empty() ? "object: " : text;
}

} // namespace

std::string responseBodySummary(const ResponseObject& object) {
    return std::visit([](const auto& alternative) { return summary(alternative); }, object);
}

} // namespace teralune
