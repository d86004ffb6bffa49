#pragma once

#include "Platform/Device/Device.h"

namespace teralune {

/// A device that is what the test says. Set it before it is used.
class FakeDevice final : public Device {
public:
    std::string model = "Test Device 7";
    std::string version = "12";
    Idiom kind = Idiom::phone;

    std::string modelDescription() const override { return model; }
    std::string systemVersion() const override { return version; }
    Idiom idiom() const override { return kind; }
};

} // namespace teralune
