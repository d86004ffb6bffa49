#include "Classes/Networking/DateFormatTransform.h"

namespace teralune {

DateFormatTransform::DateFormatTransform()
    : formatter_({.locale = "en_US_POSIX", .pattern = "LLL d, yyyy hh:mm:ss a", .timeZone = "UTC"}) {}

std::optional<Date> DateFormatTransform::transformFromJSON(const boost::json::value& value) const {
    const boost::json::string* text = value.if_string();
    return text ? formatter_.date(*text) : std::nullopt;
}

std::optional<std::string> DateFormatTransform::transformToJSON(const std::optional<Date>& date) const {
    return date ? std::optional(formatter_.string(*date)) : std::nullopt;
}

} // namespace teralune
