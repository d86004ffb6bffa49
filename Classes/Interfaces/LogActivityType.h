#pragma once

#include <string_view>

namespace teralune {

/// What the user did, as the usage log names it. The raw values are fixed: hosts keep them.
enum class LogActivityType {
    search = 0,
    solve,
    click,
    external,
    pad,
    toolbar,
    action,
    message,
    plot,
    verify,
    suggest,
    menu,
    practice,
    subjectSuggest,
    registration,
    database,
    notebook,
    solutions,
    graphingCalculator,
    widgets,
    camera,
    general,
};

/// The word that is sent. A value outside the enumeration is a fatal error.
std::string_view word(LogActivityType activity);

} // namespace teralune
