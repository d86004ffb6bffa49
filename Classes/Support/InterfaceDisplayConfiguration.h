#pragma once

#include "Classes/Interfaces/InterfaceDisplayConfigurationType.h"

namespace teralune {

class IApplication;

/// The library's display switches: the notebook is shown in full to a signed-in user, and steps are always
/// shown.
class InterfaceDisplayConfiguration final : public InterfaceDisplayConfigurationType {
public:
    explicit InterfaceDisplayConfiguration(IApplication& application) : application_(application) {}

    NotebookDisplayStyle notebookDisplayStyle() const override;
    bool shouldDisplaySteps() const override { return true; }

private:
    IApplication& application_;
};

} // namespace teralune
