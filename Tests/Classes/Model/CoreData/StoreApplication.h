#pragma once

#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Interfaces/IApplication.h"
#include "Platform/Defaults/InMemoryUserDefaults.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/FatalError.h"
#include "Tests/Support/ManualClock.h"
#include "Tests/Support/RecordingPrinter.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace teralune {

/// Keeps the errors that were recorded. A test takes those that it expects.
class RecordingCrashReporter final : public CrashReporterType {
public:
    void recordError(const Error& error) override {
        const std::lock_guard lock(mutex_);
        errors_.push_back(error);
    }
    void recordError(const Error& error, const UserInfo&) override { recordError(error); }
    void TRL_CLSNSLogv(std::string_view, std::span<const FormatArgument>) override {}

    std::vector<Error> takeErrors() {
        const std::lock_guard lock(mutex_);
        return std::exchange(errors_, {});
    }

private:
    std::mutex mutex_;
    std::vector<Error> errors_;
};

/// A host with what the store needs and nothing else; asking it for another service is a fatal error.
class StoreApplication final : public IApplication {
public:
    /// The library bundle holds the data model and the string tables.
    StoreApplication(const std::filesystem::path& documents, const std::filesystem::path& libraryBundle) {
        platform_.queuePool = std::make_shared<QueuePool>(1, QueuePool::Priority::standard);
        platform_.defaultQueue = platform_.queuePool->makeConcurrentQueue("default");
        platform_.userDefaults = std::make_shared<InMemoryUserDefaults>();
        platform_.libraryBundle = std::make_shared<Bundle>(libraryBundle, platform_.userDefaults);
        platform_.printer = printer;
        platform_.clock = clock;
        platform_.documentsDirectories = {"/nonexistent", documents};
    }

    CrashReporterType& crashReporter() override { return reporter; }
    const PlatformServices& platform() const override { return platform_; }

    std::string appName() const override { return {}; }
    std::string appVersion() const override { return {}; }
    std::string buildNum() const override { return {}; }
    std::string osInfo() const override { return {}; }
    std::string msAuthUrlScheme() const override { return {}; }
    bool big() const override { return false; }
    std::int64_t currentOrientation() const override { return 0; }
    void userWasLoggedOut() override {}
    std::shared_ptr<ExternalUserAgentSession> currentAuthorizationFlow() const override { return nullptr; }
    void setCurrentAuthorizationFlow(std::shared_ptr<ExternalUserAgentSession>) override {}
    NetworkingType& networking() override { fatalError("no networking"); }
    UserAccountModelType& userAccountModel() override { fatalError("no account"); }
    SettingsPersistenceType& persistence() override { fatalError("no settings"); }
    NetworkReachabilityType& networkReachability() override { fatalError("no reachability"); }
    InterfaceDisplayConfigurationType& displayConfiguration() override { fatalError("no configuration"); }
    NotebookSynchronizationJobType& notebookSynchronizationJob() override { fatalError("no job"); }
    DataController& dataController() override { fatalError("no data controller"); }
    LoggerType& logger() override { fatalError("no logger"); }
    NoteDataFinderType& noteDataFinder() override { fatalError("no finder"); }

    RecordingCrashReporter reporter;
    const std::shared_ptr<RecordingPrinter> printer = std::make_shared<RecordingPrinter>();
    const std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();

private:
    PlatformServices platform_;
};

} // namespace teralune
