#pragma once

#include <optional>
#include <string_view>

namespace teralune {

/// Where a query came from; sent as a word with solver requests.
enum class SolutionOrigin {
    input = 0,
    example,
    suggest,
    notebook,
    graphing,
    practice,
    related,
    didYouMean,
    ocr,
    sharedLink,
    notebookCache,
    unknown,
};

/// The word that a request carries in its "origin" parameter.
std::string_view word(SolutionOrigin origin);

/// The origin of a raw value from 0 to 11; no value outside that range.
std::optional<SolutionOrigin> solutionOrigin(int rawValue);

} // namespace teralune
