#include "Tests/Support/FakeApplication.h"

#include "Platform/Foundation/FatalError.h"

namespace teralune {
namespace {

template<class Service>
Service& given(Service* service) {
    if (!service)
        fatalError("The test asks the fake application for a service that it did not put in");
    return *service;
}

} // namespace

NetworkingType& FakeApplication::networking() {
    return given(networkingService);
}

UserAccountModelType& FakeApplication::userAccountModel() {
    return given(userAccountModelService);
}

SettingsPersistenceType& FakeApplication::persistence() {
    return given(persistenceService);
}

NetworkReachabilityType& FakeApplication::networkReachability() {
    return given(networkReachabilityService);
}

InterfaceDisplayConfigurationType& FakeApplication::displayConfiguration() {
    return given(displayConfigurationService);
}

NotebookSynchronizationJobType& FakeApplication::notebookSynchronizationJob() {
    return given(notebookSynchronizationJobService);
}

DataController& FakeApplication::dataController() {
    return given(dataControllerService);
}

LoggerType& FakeApplication::logger() {
    return given(loggerService);
}

NoteDataFinderType& FakeApplication::noteDataFinder() {
    return given(noteDataFinderService);
}

} // namespace teralune
