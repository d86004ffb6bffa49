#pragma once

namespace teralune {

/// A host screen whose layout depends on the large-layout flag.
class MainScreenBigSensitiveViewController {
public:
    virtual ~MainScreenBigSensitiveViewController() = default;
    virtual bool isBig() const = 0;
    virtual void setIsBig(bool isBig) = 0;
    /// To be called when the orientation or the flag has changed.
    virtual void orientationOrBigChanged() = 0;
};

} // namespace teralune
