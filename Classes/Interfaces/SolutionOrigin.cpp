#include "Classes/Interfaces/SolutionOrigin.h"

#include "Platform/Foundation/FatalError.h"

#include <array>

namespace teralune {
namespace {

constexpr std::array<std::string_view, 12> words = {
    "input",   "example", "suggest", "notebook",   "graphing",      "practice",
    "related", "dym",     "ocr",     "sharedlink", "notebookcache", "unknown",
};

} // namespace

std::string_view word(SolutionOrigin origin) {
    const auto index = static_cast<std::size_t>(origin);
    if (index >= words.size())
        fatalError("Unexpected enumeration value of SolutionOrigin");
    return words[index];
}

std::optional<SolutionOrigin> solutionOrigin(int rawValue) {
    if (rawValue < 0 || rawValue >= static_cast<int>(words.size()))
        return std::nullopt;
    return static_cast<SolutionOrigin>(rawValue);
}

} // namespace teralune
