#pragma once

#include <optional>
#include <string>

namespace teralune {

/// Whether the device was offline, in the sense of the operation that takes it.
struct Offline {
    bool value = false;
};

/// Sends the records of solutions that were shown from the cache, and keeps those that could not be sent.
/// Used from the main thread.
class LoggerType {
public:
    virtual ~LoggerType() = default;
    virtual void resendCachedLogs() = 0;
    virtual void sendNextCachedLogs() = 0;
    virtual void logCachedSteps(const std::string& query, const std::optional<std::string>& topic,
                                Offline offline) = 0;
};

} // namespace teralune
