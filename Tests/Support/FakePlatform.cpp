#include "Tests/Support/FakePlatform.h"

#include "Platform/Defaults/InMemoryUserDefaults.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Foundation/BundleExtension.h"
#include "Platform/Http/CookieStorage.h"

namespace teralune {

FakePlatform::FakePlatform() {
    services.mainQueue = mainQueue;
    services.defaultQueue = defaultQueue;
    services.backgroundQueue = backgroundQueue;
    services.httpDelegateQueue = httpDelegateQueue;
    services.queuePool = std::make_shared<QueuePool>(1, QueuePool::Priority::standard);
    services.backgroundPool = std::make_shared<QueuePool>(1, QueuePool::Priority::background);
    services.transport = transport;
    services.cookieStorage = std::make_shared<CookieStorage>();
    services.userDefaults = std::make_shared<InMemoryUserDefaults>();
    services.notificationCenter = notificationCenter;
    services.mainBundle = std::make_shared<BundleExtension>(TERALUNE_RESOURCES, services.userDefaults);
    services.libraryBundle = std::make_shared<Bundle>(TERALUNE_RESOURCES, services.userDefaults);
    services.printer = printer;
    services.systemLog = systemLog;
    services.clock = clock;
    services.device = device;
    setLanguage("en");
}

void FakePlatform::setLanguage(const std::string& code) {
    services.userDefaults->set("AppleLanguages", boost::json::array{boost::json::string(code)});
}

void FakePlatform::run() {
    for (std::size_t ran = 1; ran > 0;)
        ran = httpDelegateQueue->runAll() + defaultQueue->runAll() + backgroundQueue->runAll() +
              mainQueue->runAll();
}

} // namespace teralune
