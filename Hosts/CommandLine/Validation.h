#pragma once

#include <CLI/CLI.hpp>

namespace teralune {

/// Refuses an empty argument.
CLI::Validator notEmpty();
/// The rules for a tag: 1 to 20 characters, counted as UTF-16 does, and no comma, which parts tags on the
/// wire.
CLI::Validator isTag();

} // namespace teralune
