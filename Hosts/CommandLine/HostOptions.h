#pragma once

#include "Platform/PlatformServices.h"

#include <filesystem>
#include <optional>
#include <string>

namespace teralune {

/// What the user may choose for every command.
struct HostOptions {
    std::filesystem::path dataFolder = PlatformServices::Locations::standard().dataFolder;
    /// Host and port of the solver service; without one a stand-in runs inside the process.
    std::optional<std::string> apiHost;
    /// Those of the recognition service; the solver service's when absent.
    std::optional<std::string> ocrHost;
    bool plainHttp = false; ///< http instead of https for a service that was named
    bool offline = false;   ///< behave as a device without a network
    bool verbose = false;   ///< show printed and logged lines on standard error
};

} // namespace teralune
