#pragma once

#include "Classes/Interfaces/LogActivityType.h"
#include "Classes/Interfaces/LoggerType.h"
#include "Platform/Foundation/UniqueFunction.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace teralune {

/// Whether what is logged was served from the cache.
struct Cached {
    bool value = false;
};

/// Whether a camera event goes to the recognition service alone or to the solver service too.
struct LogEverywhere {
    bool value = false;
};

/// One usage record.
struct DetailedLog {
    LogActivityType activity = LogActivityType::general;
    std::string info1;
    std::optional<std::string> info2;
    std::optional<std::string> initialQuery;
    std::optional<std::int64_t> responseTimeMs;
    Offline offline;
    Cached cached;
};

/// What a solution is about, for the records that tell it.
struct SolutionSubject {
    std::string subject;
    std::string topic;
    std::string subtopic;
};

/// The usage logs. Each may be called from any thread. None shows the user anything; what can't be sent is
/// dropped, but for cached steps, whose completion tells.
class UsageLogEndpointsType {
public:
    virtual ~UsageLogEndpointsType() = default;

    virtual void sendDetailedLog(const DetailedLog& log) = 0;
    virtual void sendDetailedLogExtraFields(const DetailedLog& log, const SolutionSubject& subject) = 0;
    /// The completion runs once, on the main queue, with true when the server took the record.
    virtual void logCachedSteps(const std::string& query, const std::optional<std::string>& topic,
                                Offline offline, UniqueFunction<void(bool)> completion) = 0;
    virtual void logCameraEvent(const std::string& cameraSessionID, const std::string& action,
                                const std::optional<std::string>& extraInfo,
                                std::optional<std::chrono::milliseconds> elapsedTime,
                                LogEverywhere logEverywhere) = 0;
};

} // namespace teralune
