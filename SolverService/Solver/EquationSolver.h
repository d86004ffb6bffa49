#pragma once

#include "SolverService/Solver/Polynomial.h"
#include "SolverService/Solver/Solution.h"

#include <optional>
#include <string_view>

namespace teralune::service {

/// An equation that has been multiplied out.
struct PolynomialEquation {
    Polynomial left;
    Polynomial right;
    char letter = 'x';

    std::string latex() const { return left.latex(letter) + "=" + right.latex(letter); }
};

/// Solves a linear or quadratic equation in one unknown, exactly. Absent for every other problem, and when
/// a number on the way grows out of range. Takes any bytes.
std::optional<Solution> solveEquation(std::string_view problem);

/// For solveEquation: adds the steps from the multiplied-out equation on, and the solution. False when a
/// number grows out of range.
bool solveLinear(PolynomialEquation equation, Solution& solution);
bool solveQuadratic(PolynomialEquation equation, Solution& solution);

} // namespace teralune::service
