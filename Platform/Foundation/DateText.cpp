#include "Platform/Foundation/DateText.h"

namespace teralune {

namespace {

/// The number that the digits write; -1 when there is another character among them.
constexpr int number(std::string_view digits) {
    int result = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') {
            return -1;
        }
        result = result * 10 + (digit - '0');
    }
    return result;
}

} // namespace

std::optional<std::chrono::local_time<std::chrono::milliseconds>> parseDateText(std::string_view text) {
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    constexpr std::string_view shape = "Mmm 00, 0000 00:00:00 AM";
    if (text.size() != shape.size()) {
        return std::nullopt;
    }
    for (const std::size_t index : {3U, 6U, 7U, 12U, 15U, 18U, 21U}) {
        if (text[index] != shape[index]) {
            return std::nullopt;
        }
    }
    const std::size_t month = months.find(text.substr(0, 3));
    const int day = number(text.substr(4, 2));
    const int year = number(text.substr(8, 4));
    const int hour = number(text.substr(13, 2));
    const int minute = number(text.substr(16, 2));
    const int second = number(text.substr(19, 2));
    const bool isAfternoon = text.ends_with("PM");
    const bool isInRange = month != std::string_view::npos && month % 3 == 0 && day >= 1 && year >= 1970 &&
                           year <= 2099 && hour >= 1 && hour <= 12 && minute >= 0 && minute <= 59 &&
                           second >= 0 && second <= 59 && (isAfternoon || text.ends_with("AM"));
    if (!isInRange) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month) / 3 + 1),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) {
        return std::nullopt;
    }
    return std::chrono::local_days(date) + std::chrono::hours(hour % 12 + (isAfternoon ? 12 : 0)) +
           std::chrono::minutes(minute) + std::chrono::seconds(second);
}

} // namespace teralune
