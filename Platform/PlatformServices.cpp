#include "Platform/PlatformServices.h"

#include "Platform/Defaults/SqliteUserDefaults.h"
#include "Platform/Device/Device.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Foundation/BundleExtension.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/Printer.h"
#include "Platform/Http/CookieStorage.h"
#include "Platform/Http/CurlTransport.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <thread>

namespace teralune {
namespace {

namespace fs = std::filesystem;

fs::path environmentPath(const char* name) {
    const char* value = std::getenv(name);
    // Base directories are absolute by definition; anything else is as good as unset.
    return value && value[0] == '/' ? fs::path(value) : fs::path();
}

fs::path standardDataFolder() {
    if (const fs::path home = environmentPath("XDG_DATA_HOME"); !home.empty())
        return home / "teralune";
    if (const fs::path home = environmentPath("HOME"); !home.empty())
        return home / ".local/share/teralune";
    return fs::current_path() / ".teralune";
}

/// Where the library's resources lie: beside an installed program, where the library was installed, or in the
/// tree it was built from.
fs::path resourcesFolder() {
    std::vector<fs::path> candidates;
    std::error_code ignored;
    if (const fs::path program = fs::read_symlink("/proc/self/exe", ignored); !program.empty())
        candidates.push_back(program.parent_path().parent_path() / "share/TeraluneSharedLibrary/Resources");
    candidates.emplace_back(TERALUNE_INSTALLED_RESOURCES);
    candidates.emplace_back(TERALUNE_SOURCE_RESOURCES);
    const auto found = std::find_if(candidates.begin(), candidates.end(), [](const fs::path& folder) {
        std::error_code none;
        return fs::is_directory(folder / "Base.lproj", none);
    });
    return found == candidates.end() ? candidates.back() : *found;
}

} // namespace

PlatformServices::Locations PlatformServices::Locations::standard() {
    const fs::path resources = resourcesFolder();
    return {standardDataFolder(), resources, resources};
}

Result<PlatformServices> PlatformServices::open(const Locations& locations) {
    PlatformServices services;
    services.printer = std::make_shared<StandardPrinter>();
    services.systemLog = std::make_shared<StandardPrinter>(StandardPrinter::Stream::error);

    auto defaults = SqliteUserDefaults::open(
        locations.dataFolder / "UserDefaults.sqlite", [log = services.systemLog](const Error& error) {
            log->print("Could not write the settings: " + error.localizedDescription);
        });
    if (!defaults)
        return defaults.error();
    services.userDefaults = std::move(defaults).value();

    services.mainQueue = std::make_shared<MainQueue>();
    // Each pool has a second thread, so that one long piece of work does not hold up the others.
    const std::size_t threads = std::max(2U, std::thread::hardware_concurrency());
    services.queuePool = std::make_shared<QueuePool>(threads, QueuePool::Priority::standard);
    services.backgroundPool = std::make_shared<QueuePool>(2, QueuePool::Priority::background);
    services.defaultQueue = services.queuePool->makeConcurrentQueue("default");
    services.httpDelegateQueue = services.queuePool->makeSerialQueue("http delegate");
    services.backgroundQueue = services.backgroundPool->makeConcurrentQueue("background");

    services.transport = std::make_shared<CurlTransport>();
    services.cookieStorage = std::make_shared<CookieStorage>();
    services.notificationCenter = std::make_shared<NotificationCenter>();
    services.mainBundle =
        std::make_shared<BundleExtension>(locations.mainBundleFolder, services.userDefaults);
    services.libraryBundle = std::make_shared<Bundle>(locations.libraryBundleFolder, services.userDefaults);
    services.clock = std::make_shared<SystemClock>();
    services.device = std::make_shared<LinuxDevice>();
    services.documentsDirectories = {locations.dataFolder};
    return services;
}

const PlatformServices& PlatformServices::standard() {
    // Never destroyed: threads of the process may still use it while it exits.
    static const PlatformServices& services = *[] {
        Result<PlatformServices> opened = open(Locations::standard());
        if (!opened)
            fatalError("The platform services could not be made: " + opened.error().localizedDescription);
        return new PlatformServices(std::move(opened).value());
    }();
    return services;
}

} // namespace teralune
