#include "Classes/Support/MemoryUtil.h"

#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/ITeraluneConstants.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Memory/MemoryPressureSource.h"

namespace teralune {
namespace {

const char* levelName(MemoryPressureLevel level) {
    switch (level) {
    case MemoryPressureLevel::critical:
        return "critical";
    case MemoryPressureLevel::warning:
        return "warning";
    case MemoryPressureLevel::normal:
        return "normal";
    }
    return "(no level)";
}

} // namespace

void MemoryUtil::installMemoryWarning(IApplication& application, const ITeraluneConstants& constants) {
    if (!constants.debugMode())
        return;
    const std::shared_ptr<DispatchQueue> queue = application.platform().queuePool->makeSerialQueue("test");
    const auto source = std::make_shared<MemoryPressureSource>(queue);
    queue->async([source, &application] {
        // The handler owns the source: it is meant to stay.
        source->setEventHandler([source, &application](MemoryPressureLevel level) {
            application.crashReporter().TRL_CLSNSLogv("Memory warning: level %@", {levelName(level)});
        });
        source->resume();
    });
    application.crashReporter().TRL_CLSNSLogv("Installed memory warning");
}

} // namespace teralune
