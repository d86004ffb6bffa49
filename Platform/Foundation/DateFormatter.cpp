#include "Platform/Foundation/DateFormatter.h"

#include "Platform/Foundation/FatalError.h"

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <mutex>

namespace teralune {

struct DateFormatter::State {
    explicit State(icu::SimpleDateFormat&& madeFormat) : format(std::move(madeFormat)) {}

    /// ICU's formatter changes its calendar while it works.
    std::mutex mutex;
    icu::SimpleDateFormat format;
};

DateFormatter::DateFormatter(const Options& options) {
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat format(icu::UnicodeString::fromUTF8(options.pattern),
                                 icu::Locale(options.locale.c_str()), status);
    if (U_FAILURE(status)) {
        fatalError("A date formatter can't be made for the pattern " + options.pattern);
    }
    if (options.timeZone) {
        format.adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(*options.timeZone)));
    }
    format.setLenient(false);
    state_ = std::make_unique<State>(std::move(format));
}

DateFormatter::~DateFormatter() = default;
DateFormatter::DateFormatter(DateFormatter&&) noexcept = default;
DateFormatter& DateFormatter::operator=(DateFormatter&&) noexcept = default;

std::optional<Date> DateFormatter::date(std::string_view text) const {
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
