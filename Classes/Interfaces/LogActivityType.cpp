#include "Classes/Interfaces/LogActivityType.h"

#include "Platform/Foundation/FatalError.h"

#include <array>

namespace teralune {
namespace {

constexpr std::array<std::string_view, 22> words = {
    "Search",
    "Solve",
    "Click",
    "External",
    "Pad",
    "Toolbar",
    "Action",
    "Message",
    "Plot",
    "Verify",
    "Suggest",
    "Menu",
    "Practice",
    "SubjectSuggest",
    "Registration",
    "Database",
    "Notebook",
    "Solutions",
    "GraphingCalculator",
    "Widgets",
    "Camera",
    "General",
};

} // namespace

std::string_view word(LogActivityType activity) {
    const auto index = static_cast<std::size_t>(activity);
    if (index >= words.size())
        fatalError("Unexpected enumeration value of LogActivityType");
    return words[index];
}

} // namespace teralune
