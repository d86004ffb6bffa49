#include "Classes/Networking/StepsMetadataParse.h"

#include "Platform/Foundation/JsonFields.h"
#include "Platform/Foundation/JsonMapping.h"

namespace teralune {

StepsMetadataParse StepsMetadataParse::map(const boost::json::object& json) {
    static constexpr std::tuple fields{
        JsonField{"subject", &StepsMetadataParse::subject},
        JsonField{"topic", &StepsMetadataParse::topic},
        JsonField{"subtopic", &StepsMetadataParse::subtopic},
        JsonField{"isFromCache", &StepsMetadataParse::cached},
    };
    return mapFields(json, fields);
}

std::optional<StepsMetadataParse> StepsMetadataParse::parse(std::string_view steps) {
    const auto json = parseJson(steps);
    if (!json || !json.value().is_object())
        return std::nullopt;
    return map(json.value().get_object());
}

} // namespace teralune
