#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace teralune {

/// The languages that the process's environment asks for, best first: the list in LANGUAGE, or else the
/// locale in the first of LC_ALL, LC_MESSAGES and LANG that is set. "pt_BR.UTF-8" gives "pt-BR", "C" gives
/// "en". Called at start, since the environment has no lock.
std::vector<std::string> environmentLanguages();

/// Of the available languages those that are preferred, best first and each once. A preference for a variety
/// that is not there takes another of the same language ("pt-BR" takes "pt-PT"). Letter case doesn't matter,
/// and "iw" is "he".
std::vector<std::string> matchingLanguages(const std::vector<std::string>& preferred,
                                           const std::vector<std::string>& available);

} // namespace teralune
