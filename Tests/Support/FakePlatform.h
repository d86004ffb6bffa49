#pragma once

#include "Platform/Device/Device.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/PlatformServices.h"
#include "Tests/Support/ManualClock.h"
#include "Tests/Support/ManualQueue.h"
#include "Tests/Support/RecordingPrinter.h"
#include "Tests/Support/ScriptedTransport.h"

#include <memory>
#include <string>
#include <vector>

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

/// Platform services of which nothing leaves the test: queues that the test runs, a server that the test is,
/// settings in memory, a clock that stands still. The bundles are the library's own resources, in English
/// until setLanguage(). A member may be replaced, in services too, before it is used.
class FakePlatform {
public:
    FakePlatform();

    std::shared_ptr<ManualQueue> mainQueue = std::make_shared<ManualQueue>("main");
    std::shared_ptr<ManualQueue> defaultQueue = std::make_shared<ManualQueue>("default");
    std::shared_ptr<ManualQueue> backgroundQueue = std::make_shared<ManualQueue>("background");
    std::shared_ptr<ManualQueue> httpDelegateQueue = std::make_shared<ManualQueue>("http");
    std::shared_ptr<ScriptedTransport> transport = std::make_shared<ScriptedTransport>(httpDelegateQueue);
    std::shared_ptr<RecordingPrinter> printer = std::make_shared<RecordingPrinter>();
    std::shared_ptr<RecordingPrinter> systemLog = std::make_shared<RecordingPrinter>();
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
    std::shared_ptr<NotificationCenter> notificationCenter = std::make_shared<NotificationCenter>();

    PlatformServices services;

    /// The device's first preference.
    void setLanguage(const std::string& code);
    /// Runs every queue until all are idle.
    void run();
};

} // namespace teralune
