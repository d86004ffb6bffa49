#include "Classes/Networking/Suggestion.h"

#include "Platform/Foundation/JsonFields.h"

namespace teralune {
namespace {

bool holdsText(const boost::json::object& json, std::string_view key) {
    const boost::json::value* value = json.if_contains(key);
    return value && value->is_string();
}

} // namespace

std::optional<Suggestion> Suggestion::map(const boost::json::object& json) {
    static constexpr std::tuple fields{
        JsonField{"display", &Suggestion::display},     JsonField{"search", &Suggestion::search},
        JsonField{"priority", &Suggestion::priority},   JsonField{"pop", &Suggestion::pop},
        JsonField{"nornalPop", &Suggestion::nornalPop}, JsonField{"bucketName", &Suggestion::bucketName},
    };
    if (!holdsText(json, "display") || !holdsText(json, "search"))
        return std::nullopt;
    return mapFields(json, fields);
}

} // namespace teralune
