#pragma once

namespace teralune {

class MainSplitViewControllerDetailDelegate;

/// A main screen of the host, for the library's screens to drive.
class MainScreenViewController {
public:
    virtual ~MainScreenViewController() = default;
    virtual void becameActive() = 0;
    virtual void enteredForeground() = 0;
    virtual void setSplitViewDelegate(MainSplitViewControllerDetailDelegate* delegate) = 0;
};

} // namespace teralune
