#include "Classes/Networking/StepsMetadataParse.h"

#include "Platform/Foundation/JsonFields.h"

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

} // namespace teralune
