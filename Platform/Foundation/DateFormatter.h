#pragma once

#include "Platform/Foundation/Date.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace teralune {

/// Reads and writes dates by a pattern (Unicode TR 35), as ICU does, not leniently: the whole text must
/// match. Made once and used from any thread.
class DateFormatter {
public:
    struct Options {
        std::string locale = "en_US_POSIX";
        std::string pattern;
        /// An IANA name such as "UTC"; the device's zone when absent.
        std::optional<std::string> timeZone;
    };
    explicit DateFormatter(const Options& options);
    ~DateFormatter();
    DateFormatter(DateFormatter&&) noexcept;
    DateFormatter& operator=(DateFormatter&&) noexcept;

    std::optional<Date> date(std::string_view text) const;
    std::string string(Date date) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace teralune
