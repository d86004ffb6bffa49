#pragma once

#include "Platform/Foundation/DateFormatter.h"

#include <optional>
#include <string_view>

namespace teralune {

/// Reads the server's times of a note's last change: "MMM dd, yyyy hh:mm:ss a", as in
/// "Jan 05, 2019 03:04:05 PM". They carry no zone and are taken as UTC, so that every device stores the same
/// moment and none falls into a gap. Usable from any thread.
class NoteDateFormatter {
public:
    NoteDateFormatter();

    std::optional<Date> date(std::string_view text) const;

private:
    DateFormatter dateFormatter_;
};

} // namespace teralune
