#pragma once

#include "Classes/Interfaces/NoteDataFinderType.h"
#include "Classes/Interfaces/SolutionOrigin.h"

#include <string>

namespace teralune {

/// Whether steps are shown even where the user's settings hide them.
struct AlwaysShowSteps {
    bool value = false;
};

/// What the library's screens ask of the host's main screen.
class MainSplitViewControllerDetailDelegate {
public:
    virtual ~MainSplitViewControllerDetailDelegate() = default;
    virtual void showSolution(const std::string& query, SolutionOrigin origin, ForceWeb forceWeb,
                              AlwaysShowSteps alwaysShowSteps) = 0;
    virtual void showLoginPrompt(const std::string& message, const std::string& reason,
                                 const std::string& loginText, const std::string& cancelText) = 0;
    virtual void showFailedUserAction() = 0;
    virtual void openNotebook(const std::string& ID) = 0;
    virtual bool wasDisplayingInterstitial() const = 0;
};

} // namespace teralune
