#include "Classes/Model/CoreData/NoteDateFormatter.h"

#include <array>

namespace teralune {
namespace {

// What the formatter's calendar counts as Gregorian from the first to the last day.
constexpr int firstWhollyGregorianYear = 1583;

constexpr std::array<std::string_view, 12> monthNames{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

/// The number that the digits write; -1 when one is none.
int number(std::string_view digits) {
    int value = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') {
            return -1;
        }
        value = value * 10 + (digit - '0');
    }
    return value;
}

unsigned monthNamed(std::string_view name) {
    unsigned month = 1;
    for (const std::string_view candidate : monthNames) {
        if (candidate == name) {
            return month;
        }
        ++month;
    }
    return 0;
}

/// Reads the one spelling that the server uses; anything else is left to the formatter. A list of twenty
/// thousand notes spends more time in the general formatter than in the store.
std::optional<Date> readUsualSpelling(std::string_view text) {
    static constexpr std::string_view shape = "MMM dd, yyyy hh:mm:ss aM";
    if (text.size() != shape.size() || text[3] != ' ' || text[6] != ',' || text[7] != ' ' ||
        text[12] != ' ' || text[15] != ':' || text[18] != ':' || text[21] != ' ' || text[23] != 'M') {
        return std::nullopt;
    }
    const int day = number(text.substr(4, 2));
    const int year = number(text.substr(8, 4));
    const int hour = number(text.substr(13, 2));
    const int minute = number(text.substr(16, 2));
    const int second = number(text.substr(19, 2));
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(monthNamed(text.substr(0, 3))),
                                           std::chrono::day(day < 0 ? 0U : static_cast<unsigned>(day))};
    if (year < firstWhollyGregorianYear || !date.ok() || hour < 1 || hour > 12 || minute < 0 || minute > 59 ||
        second < 0 || second > 59 || (text[22] != 'A' && text[22] != 'P')) {
        return std::nullopt;
    }
    const std::chrono::hours hourOfDay(hour % 12 + (text[22] == 'P' ? 12 : 0));
    return Date(std::chrono::sys_days(date)) + hourOfDay + std::chrono::minutes(minute) +
           std::chrono::seconds(second);
}

} // namespace

NoteDateFormatter::NoteDateFormatter()
    : dateFormatter_({.locale = "en_US_POSIX", .pattern = "MMM dd, yyyy hh:mm:ss a", .timeZone = "UTC"}) {}

std::optional<Date> NoteDateFormatter::date(std::string_view text) const {
    if (const std::optional<Date> usual = readUsualSpelling(text)) {
        return usual;
    }
    return dateFormatter_.date(text);
}

} // namespace teralune
