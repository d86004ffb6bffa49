#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace teralune {

/// Text of protocol elements, whose case and blanks are ASCII whatever the process's locale says.

bool equalsIgnoringCase(std::string_view left, std::string_view right);
std::string lowercased(std::string_view text);
/// Without the blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);
/// The pieces between the separators, trimmed. A separator inside a quoted string separates nothing.
std::vector<std::string_view> splitList(std::string_view text, char separator);

} // namespace teralune
