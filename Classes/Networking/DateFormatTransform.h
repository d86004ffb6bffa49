#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/DateFormatter.h"

#include <boost/json/value.hpp>

#include <optional>
#include <string>

namespace teralune {

/// Dates as the user record writes them: a text such as "Mar 5, 2019 04:07:09 PM", in UTC and in English
/// whatever the interface language. Usable from any thread.
class DateFormatTransform {
public:
    DateFormatTransform();

    /// No value for anything but a text of that form.
    std::optional<Date> transformFromJSON(const boost::json::value& value) const;
    std::optional<std::string> transformToJSON(const std::optional<Date>& date) const;

private:
    DateFormatter formatter_;
};

} // namespace teralune
