#include "Classes/Utils/StringExtension.h"

#include "Platform/Foundation/Characters.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Foundation/Printer.h"
#include "Platform/Foundation/RegularExpression.h"

namespace teralune {

std::vector<std::vector<std::string>> matchingStrings(std::string_view text, std::string_view regex) {
    const std::optional<RegularExpression> expression = RegularExpression::compile(regex);
    if (!expression)
        return {};
    return expression->matches(text);
}

std::string replace(std::string_view text, std::string_view regex, std::string_view replacement) {
    const std::optional<RegularExpression> expression = RegularExpression::compile(regex);
    return expression ? expression->replacingMatches(text, replacement) : std::string(text);
}

std::string truncate(std::string_view text, std::size_t length, std::string_view trailing) {
    std::string first = firstCharacters(text, length);
    if (first.size() < text.size())
        first += trailing;
    return first;
}

std::optional<boost::json::value> parseJSONString(std::string_view text, Printer& printer) {
    Result<boost::json::value> parsed = parseJson(text);
    if (parsed)
        return std::move(parsed).value();
    printer.print(parsed.error().localizedDescription);
    return std::nullopt;
}

} // namespace teralune
