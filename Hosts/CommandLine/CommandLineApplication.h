#pragma once

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Jobs/NotebookSynchronizationJob.h"
#include "Classes/Model/CoreData/DataController.h"
#include "Classes/Model/NoteDataFinder.h"
#include "Classes/Model/SettingsPersistence.h"
#include "Classes/Model/UserAccountModel.h"
#include "Classes/Networking/Networking.h"
#include "Classes/Support/InterfaceDisplayConfiguration.h"
#include "Classes/Support/LocalCrashReporter.h"
#include "Classes/Support/Logger.h"
#include "Hosts/CommandLine/CommandLineConstants.h"
#include "Hosts/CommandLine/HostOptions.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/PlatformServices.h"

#include <memory>
#include <string>

namespace teralune {

class SolverService;
class TransferCounter;

/// The terminal's host application: makes every service of the library once, hands itself to each, and
/// returns them where the library asks. Made, used and destroyed on the main thread; the getters answer on
/// any thread.
class CommandLineApplication final : public IApplication {
public:
    /// Fails, with a line for the user, when the data folder can't be used or the stand-in service can't be
    /// started.
    static Result<std::unique_ptr<CommandLineApplication>> open(const HostOptions& options);
    ~CommandLineApplication() override;

    // ---- What the library asks for

    CrashReporterType& crashReporter() override { return crashReporter_; }
    std::string appName() const override { return "Teralune"; }
    std::string appVersion() const override { return TERALUNE_VERSION; }
    std::string buildNum() const override { return "1"; }
    std::string osInfo() const override;
    std::string msAuthUrlScheme() const override { return "teralune-sign-in"; }
    bool big() const override { return false; }
    std::int64_t currentOrientation() const override { return 0; }
    void userWasLoggedOut() override { sessionWasRejected_ = true; }
    std::shared_ptr<ExternalUserAgentSession> currentAuthorizationFlow() const override { return {}; }
    /// A terminal signs in by e-mail and password only.
    void setCurrentAuthorizationFlow(std::shared_ptr<ExternalUserAgentSession>) override {}

    NetworkingType& networking() override { return networking_; }
    UserAccountModelType& userAccountModel() override { return userAccountModel_; }
    SettingsPersistenceType& persistence() override { return persistence_; }
    NetworkReachabilityType& networkReachability() override { return *networkReachability_; }
    InterfaceDisplayConfigurationType& displayConfiguration() override { return displayConfiguration_; }
    NotebookSynchronizationJob& notebookSynchronizationJob() override { return notebookSynchronizationJob_; }
    DataController& dataController() override { return dataController_; }
    LoggerType& logger() override { return logger_; }
    NoteDataFinderType& noteDataFinder() override { return noteDataFinder_; }
    const PlatformServices& platform() const override { return platform_; }

    // ---- What the commands ask for

    const std::shared_ptr<MainQueue>& mainQueue() const { return mainQueue_; }
    /// Whether the server has ended the session while the command ran.
    bool sessionWasRejected() const { return sessionWasRejected_; }
    std::string serviceAddress() const { return networking_.fullHostName(); }
    /// As the system reports it; waits a moment for the first report.
    bool hasInternetConnection();
    /// Runs the main queue until no request is under way, for a few seconds at most.
    void settle();

private:
    /// What has to exist before any service, because it can fail.
    struct Foundations;
    explicit CommandLineApplication(Foundations foundations);

    // In the order in which they lean on each other. Networking comes last and so goes first: it ends what
    // is under way while everyone else is still there.
    std::unique_ptr<SolverService> standIn_;
    PlatformServices platform_;
    std::shared_ptr<MainQueue> mainQueue_;
    std::shared_ptr<TransferCounter> transferCounter_;
    CommandLineConstants constants_;
    bool sessionWasRejected_ = false;

    LocalCrashReporter crashReporter_;
    SettingsPersistence persistence_;
    UserAccountModel userAccountModel_;
    InterfaceDisplayConfiguration displayConfiguration_;
    std::unique_ptr<NetworkReachabilityType> networkReachability_;
    Logger logger_;
    DataController dataController_;
    NoteDataFinder noteDataFinder_;
    // The job goes first, with the background work that still asks for services, and then the client with the
    // requests that are under way.
    Networking networking_;
    NotebookSynchronizationJob notebookSynchronizationJob_;
};

} // namespace teralune
