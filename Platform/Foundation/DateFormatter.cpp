#include "Platform/Foundation/DateFormatter.h"

#include "Platform/Foundation/DateText.h"
#include "Platform/Foundation/FatalError.h"

#include <unicode/basictz.h>
#include <unicode/smpdtfmt.h>
#include <unicode/tztrans.h>

#include <limits>
#include <mutex>
#include <vector>

namespace teralune {

namespace {

using LocalTime = std::chrono::local_time<std::chrono::milliseconds>;

/// A time between two changes of a zone's clock, and the clock's distance from UTC in it.
struct Period {
    double from;
    double to;
    double offset;

    /// The moment in UTC, if the whole day around it lies in this period: only then is the local time
    /// certain to exist once.
    std::optional<Date> moment(LocalTime time) const {
        constexpr double day = 86'400'000;
        const double utc = static_cast<double>(time.time_since_epoch().count()) - offset;
        if (utc - day < from || utc + day > to) {
            return std::nullopt;
        }
        return Date(std::chrono::milliseconds(static_cast<std::int64_t>(utc)));
    }
};

std::optional<Period> periodAround(const icu::TimeZone& timeZone, LocalTime time) {
    const auto* zone = dynamic_cast<const icu::BasicTimeZone*>(&timeZone);
    if (zone == nullptr) {
        return std::nullopt;
    }
    int32_t rawOffset = 0;
    int32_t savings = 0;
    UErrorCode status = U_ZERO_ERROR;
    const auto moment = static_cast<UDate>(time.time_since_epoch().count());
    zone->getOffset(moment, 0, rawOffset, savings, status);
    if (U_FAILURE(status)) {
        return std::nullopt;
    }
    icu::TimeZoneTransition previous;
    icu::TimeZoneTransition next;
    const bool hasPrevious = zone->getPreviousTransition(moment, 1, previous);
    const bool hasNext = zone->getNextTransition(moment, 0, next);
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return Period{hasPrevious ? previous.getTime() : -infinity, hasNext ? next.getTime() : infinity,
                  static_cast<double>(rawOffset) + static_cast<double>(savings)};
}

} // namespace

struct DateFormatter::State {
    State(const Options& options, UErrorCode& status)
        : format(icu::UnicodeString::fromUTF8(options.pattern), icu::Locale(options.locale.c_str()), status) {
    }

    /// ICU's formatter changes its calendar while it works.
    std::mutex mutex;
    icu::SimpleDateFormat format;
    /// Set for the pattern that parseDateText() reads, which then answers most texts twenty times as fast.
    bool readsDateText = false;
    /// Those met so far; a zone has about two a year.
    std::vector<Period> periods;

    /// The lock must be held.
    std::optional<Date> quickDate(LocalTime time) {
        for (const Period& period : periods) {
            if (const auto moment = period.moment(time)) {
                return moment;
            }
        }
        if (const auto period = periodAround(format.getTimeZone(), time)) {
            if (const auto moment = period->moment(time)) {
                periods.push_back(*period);
                return moment;
            }
        }
        return std::nullopt;
    }
};

DateFormatter::DateFormatter(const Options& options) {
    UErrorCode status = U_ZERO_ERROR;
    state_ = std::make_unique<State>(options, status);
    if (U_FAILURE(status)) {
        fatalError("A date formatter can't be made for the pattern " + options.pattern);
    }
    if (options.timeZone) {
        const auto name = icu::UnicodeString::fromUTF8(*options.timeZone);
        state_->format.adoptTimeZone(icu::TimeZone::createTimeZone(name));
    }
    state_->format.setLenient(false);
    state_->readsDateText = options.locale == "en_US_POSIX" && options.pattern == "MMM dd, yyyy hh:mm:ss a";
}

DateFormatter::~DateFormatter() = default;
DateFormatter::DateFormatter(DateFormatter&&) noexcept = default;
DateFormatter& DateFormatter::operator=(DateFormatter&&) noexcept = default;

std::optional<Date> DateFormatter::date(std::string_view text) const {
    if (state_->readsDateText) {
        if (const auto time = parseDateText(text)) {
            const std::lock_guard lock(state_->mutex);
            if (const auto date = state_->quickDate(*time)) {
                return date;
            }
        }
    }
    const auto unicodeText =
        icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    icu::ParsePosition position;
    UDate milliseconds = 0;
    {
        const std::lock_guard lock(state_->mutex);
        milliseconds = state_->format.parse(unicodeText, position);
    }
    if (position.getErrorIndex() >= 0 || position.getIndex() != unicodeText.length()) {
        return std::nullopt;
    }
    return Date(std::chrono::milliseconds(static_cast<std::int64_t>(milliseconds)));
}

std::string DateFormatter::string(Date date) const {
    icu::UnicodeString formatted;
    {
        const std::lock_guard lock(state_->mutex);
        state_->format.format(static_cast<UDate>(date.time_since_epoch().count()), formatted);
    }
    std::string text;
    return formatted.toUTF8String(text);
}

} // namespace teralune
