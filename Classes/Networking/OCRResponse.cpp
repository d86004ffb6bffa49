#include "Classes/Networking/OCRResponse.h"

#include "Platform/Foundation/JsonFields.h"

namespace teralune {

OCRResponse OCRResponse::map(const boost::json::object& json) {
    static constexpr std::tuple fields{
        JsonField{"location", &OCRResponse::location},
        JsonField{"success", &OCRResponse::success},
        JsonField{"error", &OCRResponse::ocrError},
        JsonField{"latex", &OCRResponse::latex},
        JsonField{"user_message", &OCRResponse::userMessage},
        JsonField{"user_message_count", &OCRResponse::userMessageCount},
    };
    return mapFields(json, fields);
}

} // namespace teralune
