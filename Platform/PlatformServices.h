#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/Result.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace teralune {

class Bundle;
class BundleExtension;
class CookieStorage;
class Device;
class DispatchQueue;
class HttpTransport;
class NotificationCenter;
class Printer;
class QueuePool;
class UserDefaults;

/// Everything the library takes from its surroundings, handed out by the host through
/// IApplication::platform(). All pointers are set; all services may be used from any thread. A test makes one
/// of its own.
struct PlatformServices {
    std::shared_ptr<DispatchQueue> mainQueue;
    /// The shared concurrent queues of standard and of background priority.
    std::shared_ptr<DispatchQueue> defaultQueue;
    std::shared_ptr<DispatchQueue> backgroundQueue;
    /// The serial queue on which HTTP sessions adapt, retry, validate and map.
    std::shared_ptr<DispatchQueue> httpDelegateQueue;
    /// The threads behind the queues; the first makes further queues.
    std::shared_ptr<QueuePool> queuePool;
    std::shared_ptr<QueuePool> backgroundPool;

    std::shared_ptr<HttpTransport> transport;
    std::shared_ptr<CookieStorage> cookieStorage;
    std::shared_ptr<UserDefaults> userDefaults;
    std::shared_ptr<NotificationCenter> notificationCenter;
    /// The host's own resources, and the library's string tables and data model.
    std::shared_ptr<BundleExtension> mainBundle;
    std::shared_ptr<Bundle> libraryBundle;
    /// Where printed lines go, and where the few lines of the system log go.
    std::shared_ptr<Printer> printer;
    std::shared_ptr<Printer> systemLog;
    std::shared_ptr<Clock> clock;
    std::shared_ptr<Device> device;
    /// The user's documents folders; the last one holds the notebook store.
    std::vector<std::filesystem::path> documentsDirectories;

    /// Where a process keeps its data and finds its resources.
    struct Locations {
        /// Settings and store; by default "teralune" in $XDG_DATA_HOME or ~/.local/share.
        std::filesystem::path dataFolder;
        std::filesystem::path mainBundleFolder;
        std::filesystem::path libraryBundleFolder;
        static Locations standard();
    };

    /// The real services. Fails when the settings can't be opened.
    static Result<PlatformServices> open(const Locations& locations);
    /// Those of the process, made on first use with the standard locations; a failure ends the program.
    static const PlatformServices& standard();
};

} // namespace teralune
