#pragma once

#include <boost/json/value.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teralune {

class Printer;

/// For every match of the pattern, in order: the whole match, then each group; a group that took no part is
/// "". An invalid pattern matches nothing.
std::vector<std::vector<std::string>> matchingStrings(std::string_view text, std::string_view regex);

/// The text with every match replaced by the template, in which "$1" stands for a group and a backslash takes
/// its special meaning from a character. An invalid pattern, or a group that the pattern lacks, leaves the
/// text as it is.
std::string replace(std::string_view text, std::string_view regex, std::string_view replacement);

/// The text's first characters and the trailing text when it has more than length, the text itself otherwise.
/// Characters are counted as a reader sees them.
std::string truncate(std::string_view text, std::size_t length, std::string_view trailing);

/// The value of the text as JSON, of at most 64 levels; absent, which is printed, when it is no valid JSON or
/// deeper.
std::optional<boost::json::value> parseJSONString(std::string_view text, Printer& printer);

} // namespace teralune
