#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace teralune {

/// One argument of a format string: a text for "%@", a whole number for "%d" and "%ld", a number for "%f".
using FormatArgument = std::variant<std::string, std::int64_t, double>;

/// Formats with the phone's placeholders: %@ (any argument as text), %d %i %ld %lld %lu %u %x, %f, %s and %%,
/// with the usual flags, width and precision ("%04d.jpg"). A placeholder without an argument stays as it
/// stands; an argument without a placeholder is dropped. Never fails.
std::string formatString(std::string_view format, std::span<const FormatArgument> arguments);
std::string formatString(std::string_view format, std::initializer_list<FormatArgument> arguments);

} // namespace teralune
