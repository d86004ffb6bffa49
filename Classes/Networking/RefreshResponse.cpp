#include "Classes/Networking/RefreshResponse.h"

#include "Platform/Foundation/JsonFields.h"

namespace teralune {

RefreshResponse RefreshResponse::map(const boost::json::object& json) {
    static constexpr std::tuple fields{
        JsonField{"jwt", &RefreshResponse::jwt},
        JsonField{"alert", &RefreshResponse::alert},
    };
    return mapFields(json, fields);
}

} // namespace teralune
