#pragma once

#include "SolverService/Solver/Expression.h"

#include <optional>
#include <string_view>

namespace teralune::service {

/// The two sides of an equation.
struct Equation {
    Expression::Pointer left;
    Expression::Pointer right;
};

/// Reads one expression, or one equation. The text may be anything a client sends: what is not understood,
/// is too long or is nested too deeply is absent.
Expression::Pointer parseExpression(std::string_view text);
std::optional<Equation> parseEquation(std::string_view text);

} // namespace teralune::service
