#pragma once

#include "Classes/Model/CoreData/DataController.h"
#include "Classes/Networking/Networking.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/TemporaryFolder.h"

#include <string>
#include <string_view>
#include <vector>

namespace teralune {

/// A fake host with a real API client, whose server is the test, and a real store in a temporary folder.
class FakeStoreApplication {
public:
    FakeStoreApplication() {
        application.fakePlatform.services.documentsDirectories = {folder.path()};
        // The store is opened while its owner waits, so this queue needs a thread.
        application.fakePlatform.services.defaultQueue =
            application.fakePlatform.services.queuePool->makeConcurrentQueue("default");
        application.networkingService = &networking;
        application.dataControllerService = &dataController.emplace(application);
    }

    /// The paths and queries of what was sent so far, in order.
    std::vector<std::string> sent() const {
        std::vector<std::string> targets;
        for (const URLRequest& request : application.fakePlatform.transport->requests())
            targets.push_back(request.url.substr(networking.fullHostName().size()));
        return targets;
    }
    /// Answers the request of that place and runs what follows from it.
    void answer(std::size_t index, int status, std::string body) {
        application.fakePlatform.transport->answer(index, ScriptedTransport::reply(status, std::move(body)));
        application.run();
    }

    TemporaryFolder folder;
    FakeApplication application;
    Networking networking{application, application.constants};
    std::optional<DataController> dataController;
};

} // namespace teralune
