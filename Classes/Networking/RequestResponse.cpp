#include "Classes/Networking/RequestResponse.h"

#include "Platform/Foundation/JsonFields.h"

namespace teralune {

RequestResponse RequestResponse::map(const boost::json::object& json) {
    static constexpr std::tuple fields{
        JsonField{"success", &RequestResponse::success},
        JsonField{"message", &RequestResponse::message},
    };
    return mapFields(json, fields);
}

} // namespace teralune
