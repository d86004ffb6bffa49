#pragma once

#include "SolverService/Solver/Expression.h"

#include <optional>
#include <string_view>
#include <vector>

namespace teralune::service {

/// One piece of a problem's text.
struct Token {
    enum class Kind {
        number,
        letter,
        pi,
        function,
        fraction,
        plus,
        minus,
        times,
        divide,
        power,
        /// closing says which bracket ends what this one begins.
        open,
        close,
        bar,
        equals,
        end,
    };

    Kind kind = Kind::end;
    Rational number;
    char letter = 0;
    Function function = Function::sine;
    char closing = 0;
};

/// Takes plain text and the LaTeX that people paste apart into tokens, closed by an end token. Absent when
/// the text is too long or holds anything that is no part of an equation.
std::optional<std::vector<Token>> tokensOf(std::string_view text);

} // namespace teralune::service
