#pragma once

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/ITeraluneConstants.h"
#include "Classes/Interfaces/UserAccountModelType.h"
#include "Classes/Model/SettingsPersistence.h"
#include "Platform/Foundation/FatalError.h"
#include "Tests/Support/FakePlatform.h"
#include "Tests/Support/RecordingCrashReporter.h"

#include <memory>
#include <string>

namespace teralune {

/// Two hosts that no request reaches. Set it before it is used.
class FakeConstants final : public ITeraluneConstants {
public:
    bool isHttps = true;
    std::string api = "api.test";
    bool isDebug = false;

    bool httpsProtocol() const override { return isHttps; }
    std::string apiHost() const override { return api; }
    std::string ocrHost() const override { return "ocr.test"; }
    bool debugMode() const override { return isDebug; }
};

/// An account whose state is the settings' and whose operations do no more than they must.
class FakeUserAccountModel final : public UserAccountModelType {
public:
    explicit FakeUserAccountModel(SettingsPersistenceType& persistence) : persistence_(persistence) {}

    /// Signs in, without any request.
    void signIn(const std::string& connectedID, const std::string& accessToken) {
        persistence_.setAccessToken(accessToken);
        persistence_.setConnectedID(connectedID);
    }

    int prompts = 0; ///< calls of logoutUserAndPromptForLogin

    std::string connectedID() const override { return persistence_.connectedID().value_or(""); }
    bool isLoggedIn() const override { return !connectedID().empty(); }
    void consume(const std::optional<boost::json::value>&) override {}
    void refreshUserInfo() override {}
    Task<void> updateAccountInfo(const std::string&, const std::string&) override {
        return Task<void>::forResult({});
    }
    void logOut() override { persistence_.logout(); }
    void logoutUserAndPromptForLogin() override {
        ++prompts;
        persistence_.logout();
    }

private:
    SettingsPersistenceType& persistence_;
};

/// A host for tests: records what is reported, keeps its settings in memory, and hands out the services that
/// the test has put into it. Asking for a service that was not put in ends the test program.
class FakeApplication final : public IApplication {
public:
    FakePlatform fakePlatform;
    FakeConstants constants;
    RecordingCrashReporter recordingCrashReporter;
    SettingsPersistence settings{fakePlatform.services.userDefaults};
    FakeUserAccountModel fakeUserAccountModel{settings};

    std::string name = "My App";
    std::string version = "3.1";
    std::string build = "42";
    std::int64_t orientation = 1;
    int logOutsTold = 0; ///< calls of userWasLoggedOut

    CrashReporterType* crashReporterService = &recordingCrashReporter;
    NetworkingType* networkingService = nullptr;
    UserAccountModelType* userAccountModelService = &fakeUserAccountModel;
    NetworkReachabilityType* networkReachabilityService = nullptr;
    NotebookSynchronizationJobType* notebookSynchronizationJobService = nullptr;
    DataController* dataControllerService = nullptr;
    LoggerType* loggerService = nullptr;

    /// Runs every queue until all are idle.
    void run() { fakePlatform.run(); }

    CrashReporterType& crashReporter() override { return given(crashReporterService); }
    std::string appName() const override { return name; }
    std::string appVersion() const override { return version; }
    std::string buildNum() const override { return build; }
    std::string osInfo() const override { return "Test OS"; }
    std::string msAuthUrlScheme() const override { return "msauth.teralune"; }
    bool big() const override { return false; }
    std::int64_t currentOrientation() const override { return orientation; }
    void userWasLoggedOut() override { ++logOutsTold; }
    std::shared_ptr<ExternalUserAgentSession> currentAuthorizationFlow() const override { return nullptr; }
    void setCurrentAuthorizationFlow(std::shared_ptr<ExternalUserAgentSession>) override {}

    NetworkingType& networking() override { return given(networkingService); }
    UserAccountModelType& userAccountModel() override { return given(userAccountModelService); }
    SettingsPersistenceType& persistence() override { return settings; }
    NetworkReachabilityType& networkReachability() override { return given(networkReachabilityService); }
    InterfaceDisplayConfigurationType& displayConfiguration() override {
        return given<InterfaceDisplayConfigurationType>(nullptr);
    }
    NotebookSynchronizationJobType& notebookSynchronizationJob() override {
        return given(notebookSynchronizationJobService);
    }
    DataController& dataController() override { return given(dataControllerService); }
    LoggerType& logger() override { return given(loggerService); }
    NoteDataFinderType& noteDataFinder() override { return given<NoteDataFinderType>(nullptr); }
    const PlatformServices& platform() const override { return fakePlatform.services; }

private:
    template<class Service>
    static Service& given(Service* service) {
        if (!service)
            fatalError("The test asks the fake application for a service that it did not put in");
        return *service;
    }
};

} // namespace teralune
