#pragma once

#include <string>

namespace teralune {

/// What the machine says of itself.
class Device {
public:
    enum class Idiom { phone, tablet };

    virtual ~Device() = default;
    /// A model name for people, such as "ThinkPad X1 Carbon"; "Linux" when the machine tells none.
    virtual std::string modelDescription() const = 0;
    /// The operating system's version alone, such as "12".
    virtual std::string systemVersion() const = 0;
    virtual Idiom idiom() const = 0;
};

/// Read once from the firmware's product name (sysfs, or the device tree) and from os-release.
class LinuxDevice final : public Device {
public:
    LinuxDevice();
    /// The same from another root folder, for tests.
    explicit LinuxDevice(const std::string& rootFolder);

    std::string modelDescription() const override { return modelDescription_; }
    std::string systemVersion() const override { return systemVersion_; }
    Idiom idiom() const override { return Idiom::tablet; }

private:
    std::string modelDescription_;
    std::string systemVersion_;
};

} // namespace teralune
