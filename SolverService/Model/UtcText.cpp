#include "SolverService/Model/UtcText.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace teralune::service {

namespace {

// strftime would follow the process's locale; the clients read English months only.
constexpr std::array<const char*, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string formatted(std::int64_t secondsSinceEpoch, const char* format) {
    const std::time_t seconds = secondsSinceEpoch;
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, months.at(static_cast<std::size_t>(utc.tm_mon)),
                  utc.tm_mday, utc.tm_year + 1900, (utc.tm_hour + 11) % 12 + 1, utc.tm_min, utc.tm_sec,
                  utc.tm_hour < 12 ? "AM" : "PM");
    return text.data();
}

} // namespace

std::string noteTime(std::int64_t secondsSinceEpoch) {
    return formatted(secondsSinceEpoch, "%s %02d, %d %02d:%02d:%02d %s");
}

std::string registrationTime(std::int64_t secondsSinceEpoch) {
    return formatted(secondsSinceEpoch, "%s %d, %d %02d:%02d:%02d %s");
}

} // namespace teralune::service
