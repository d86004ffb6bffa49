#pragma once

#include "Platform/PlatformServices.h"

#include <cstdint>
#include <memory>
#include <string>

namespace teralune {

class CrashReporterType;
class DataController;
class ExternalUserAgentSession;
class InterfaceDisplayConfigurationType;
class LoggerType;
class NetworkingType;
class NetworkReachabilityType;
class NotebookSynchronizationJobType;
class NoteDataFinderType;
class SettingsPersistenceType;
class UserAccountModelType;

/// The host application: the one registry through which services and screens reach each other. The host makes
/// the services, handing itself to each, and returns them here; the library asks for a service each time it
/// needs one.
///
/// Getters are called on any thread and must be safe to call there; userWasLoggedOut() is called on the main
/// thread. The application and its services outlive every request.
///
/// A host ends in this order, on the main thread: it destroys the notebook's synchronization job, which waits
/// for its background work, so that nobody else asks for services; it destroys Networking, which cancels what
/// is under way; it drops or drains the main queue, where the last completions wait; then the other services
/// and the application go.
class IApplication {
public:
    virtual ~IApplication() = default;

    virtual CrashReporterType& crashReporter() = 0;
    virtual std::string appName() const = 0;
    virtual std::string appVersion() const = 0;
    virtual std::string buildNum() const = 0;
    virtual std::string osInfo() const = 0;
    /// The URL scheme that the host has registered for the redirect of a Microsoft sign-in.
    virtual std::string msAuthUrlScheme() const = 0;
    /// Whether the host shows its large layout.
    virtual bool big() const = 0;
    /// 0 unknown, 1 portrait, 2 portrait upside down, 3 landscape left, 4 landscape right.
    virtual std::int64_t currentOrientation() const = 0;
    /// The user has been signed out because the server rejected the session.
    virtual void userWasLoggedOut() = 0;

    /// The Microsoft sign-in in progress, kept so that the host can hand it the redirect.
    virtual std::shared_ptr<ExternalUserAgentSession> currentAuthorizationFlow() const = 0;
    virtual void setCurrentAuthorizationFlow(std::shared_ptr<ExternalUserAgentSession> flow) = 0;

    virtual NetworkingType& networking() = 0;
    virtual UserAccountModelType& userAccountModel() = 0;
    virtual SettingsPersistenceType& persistence() = 0;
    virtual NetworkReachabilityType& networkReachability() = 0;
    virtual InterfaceDisplayConfigurationType& displayConfiguration() = 0;
    virtual NotebookSynchronizationJobType& notebookSynchronizationJob() = 0;
    virtual DataController& dataController() = 0;
    virtual LoggerType& logger() = 0;
    virtual NoteDataFinderType& noteDataFinder() = 0;

    /// What stands for the phone's platform. The process's own unless a host replaces it.
    virtual const PlatformServices& platform() const { return PlatformServices::standard(); }
};

} // namespace teralune
