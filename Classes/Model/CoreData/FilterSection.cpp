#include "Classes/Model/CoreData/FilterSection.h"

namespace teralune {

std::vector<std::string> FilterSection::selectedOptions() const {
    std::vector<std::string> selected;
    for (const auto& [option, isSelected] : dict) {
        if (isSelected) {
            selected.push_back(option);
        }
    }
    return selected;
}

} // namespace teralune
