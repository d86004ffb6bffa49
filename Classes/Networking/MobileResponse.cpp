#include "Classes/Networking/MobileResponse.h"

#include "Platform/Foundation/JsonFields.h"

namespace teralune {

MobileResponse MobileResponse::map(const boost::json::object& json) {
    static constexpr std::tuple fields{JsonField{"alert", &MobileResponse::alert}};
    return mapFields(json, fields);
}

} // namespace teralune
