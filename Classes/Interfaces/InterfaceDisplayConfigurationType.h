#pragma once

#include <optional>

namespace teralune {

/// How the notebook screen presents itself.
enum class NotebookDisplayStyle {
    signedOut = 0,
    reduced = 1,
    signedIn = 2,
};

constexpr std::optional<NotebookDisplayStyle> notebookDisplayStyle(int rawValue) {
    return rawValue >= 0 && rawValue <= 2 ? std::optional(static_cast<NotebookDisplayStyle>(rawValue))
                                          : std::nullopt;
}

/// Switches of the display; computed on each read.
class InterfaceDisplayConfigurationType {
public:
    virtual ~InterfaceDisplayConfigurationType() = default;
    virtual NotebookDisplayStyle notebookDisplayStyle() const = 0;
    virtual bool shouldDisplaySteps() const = 0;
};

} // namespace teralune
