#include "Hosts/CommandLine/CommandLineApplication.h"

#include "Classes/Model/SolutionStepsFetchingStrategy.h"
#include "Classes/Networking/NetworkReachability.h"
#include "Hosts/CommandLine/CommandError.h"
#include "Hosts/CommandLine/DataFolder.h"
#include "Hosts/CommandLine/OfflineReachability.h"
#include "Hosts/CommandLine/OfflineTransport.h"
#include "Hosts/CommandLine/SilentPrinter.h"
#include "Hosts/CommandLine/TransferCounter.h"
#include "Platform/Device/Device.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Foundation/Printer.h"
#include "SolverService/SolverService.h"

namespace teralune {
namespace {

constexpr std::chrono::seconds settleLimit{5};
constexpr std::chrono::milliseconds settleTick{5};
constexpr std::chrono::milliseconds reachabilityLimit{200};

Result<std::unique_ptr<SolverService>> startStandIn(const HostOptions& options) {
    if (options.apiHost || options.offline)
        return std::unique_ptr<SolverService>();
    SolverService::Options serviceOptions;
    serviceOptions.dataFile = options.dataFolder / "SolverService.sqlite";
    auto started = SolverService::start(serviceOptions);
    if (!started)
        return commandError("The stand-in service can't be started: " + started.error().localizedDescription);
    return started;
}

CommandLineConstants::Values whereTheServicesAre(const HostOptions& options, const SolverService* standIn) {
    const std::string apiHost = standIn ? standIn->host() : options.apiHost.value_or("127.0.0.1");
    return {.httpsProtocol = !standIn && !options.plainHttp,
            .apiHost = apiHost,
            .ocrHost = options.ocrHost.value_or(apiHost),
            .debugMode = options.verbose};
}

/// Printed and logged lines share standard error, so that standard output is the command's alone.
std::shared_ptr<Printer> makePrinter(const HostOptions& options) {
    if (options.verbose)
        return std::make_shared<StandardPrinter>(StandardPrinter::Stream::error);
    return std::make_shared<SilentPrinter>();
}

std::unique_ptr<NetworkReachabilityType> makeReachability(const HostOptions& options,
                                                          const PlatformServices& platform) {
    if (options.offline)
        return std::make_unique<OfflineReachability>();
    return std::make_unique<NetworkReachability>(platform);
}

} // namespace

struct CommandLineApplication::Foundations {
    std::unique_ptr<SolverService> standIn;
    PlatformServices platform;
    std::shared_ptr<MainQueue> mainQueue;
    std::shared_ptr<TransferCounter> transferCounter;
    HostOptions options;
};

Result<std::unique_ptr<CommandLineApplication>> CommandLineApplication::open(const HostOptions& options) {
    if (Result<void> folder = prepareDataFolder(options.dataFolder); !folder)
        return folder.error();

    PlatformServices::Locations locations = PlatformServices::Locations::standard();
    locations.dataFolder = options.dataFolder;
    Result<PlatformServices> opened = PlatformServices::open(locations);
    if (!opened)
        return commandError("The settings can't be opened: " + opened.error().localizedDescription);
    Result<std::unique_ptr<SolverService>> standIn = startStandIn(options);
    if (!standIn)
        return standIn.error();

    Foundations foundations{.standIn = std::move(standIn).value(),
                            .platform = std::move(opened).value(),
                            .mainQueue = std::make_shared<MainQueue>(),
                            .transferCounter = {},
                            .options = options};
    // A host replaces those platform services that it wants otherwise, before anyone uses them.
    PlatformServices& platform = foundations.platform;
    platform.mainQueue = foundations.mainQueue;
    platform.printer = makePrinter(options);
    platform.systemLog = platform.printer;
    if (options.offline)
        platform.transport =
            std::make_shared<OfflineTransport>(platform.queuePool->makeSerialQueue("offline"));
    foundations.transferCounter = std::make_shared<TransferCounter>(platform.transport);
    platform.transport = foundations.transferCounter;
    return std::unique_ptr<CommandLineApplication>(new CommandLineApplication(std::move(foundations)));
}

CommandLineApplication::CommandLineApplication(Foundations foundations)
    : standIn_(std::move(foundations.standIn))
    , platform_(std::move(foundations.platform))
    , mainQueue_(std::move(foundations.mainQueue))
    , transferCounter_(std::move(foundations.transferCounter))
    , constants_(whereTheServicesAre(foundations.options, standIn_.get()))
    , crashReporter_(foundations.options.dataFolder / "teralune.log", platform_.clock,
                     foundations.options.verbose ? platform_.printer : nullptr)
    , persistence_(platform_.userDefaults)
    , userAccountModel_(*this)
    , displayConfiguration_(*this)
    , networkReachability_(makeReachability(foundations.options, platform_))
    , logger_(*this)
    , dataController_(*this)
    , noteDataFinder_(*this, std::make_unique<SolutionStepsFetchingStrategy>(*this))
    , networking_(*this, constants_)
    , notebookSynchronizationJob_(*this) {}

CommandLineApplication::~CommandLineApplication() = default;

std::string CommandLineApplication::osInfo() const {
    return "Linux " + platform_.device->systemVersion();
}

bool CommandLineApplication::hasInternetConnection() {
    return mainQueue_->runUntil([this] { return networkReachability_->hasInternetConnection(); },
                                reachabilityLimit);
}

void CommandLineApplication::settle() {
    const auto noRequestIsUnderWay = [this] {
        if (transferCounter_->transfersUnderWay() > 0)
            return false;
        // A reply that has just arrived may be on its way through the delegate queue, and start a retry. A
        // session may put its next steps behind the first call; what they do is seen after the second.
        for (int call = 0; call < 2; ++call) {
            platform_.httpDelegateQueue->sync([] {});
            if (mainQueue_->drain() || transferCounter_->transfersUnderWay() > 0)
                return false;
        }
        return true;
    };
    const auto limit = std::chrono::steady_clock::now() + settleLimit;
    while (!noRequestIsUnderWay() && std::chrono::steady_clock::now() < limit)
        mainQueue_->runUntil([] { return false; }, settleTick);
}

} // namespace teralune
