#pragma once

#include "Classes/Interfaces/LoggerType.h"
#include "Classes/Support/QueryLog.h"
#include "Platform/Foundation/Lifetime.h"

#include <deque>

namespace teralune {

class IApplication;

/// Sends the records of cached solutions and queues those that could not be sent. The queue is kept in the
/// settings as well, rewritten after each change. Used and dropped on the main thread, where the answers
/// come in.
class Logger final : public LoggerType {
public:
    explicit Logger(IApplication& application) : application_(application) {}

    /// Loads the stored queue, if it may, and begins to drain the queue. The host decides when, as when the
    /// connection comes back.
    void resendCachedLogs() override;
    /// Sends the first of the queue. Success goes on with the next; failure puts it at the end and stops.
    void sendNextCachedLogs() override;
    void logCachedSteps(const std::string& query, const std::optional<std::string>& topic,
                        Offline offline) override;

private:
    void sent(bool success, QueryLog log);
    void saveCache() const;
    void loadCache();
    void print(const std::string& line) const;

    IApplication& application_;
    bool hasBeenLoaded_ = false;
    std::deque<QueryLog> offlineQueryLogCache_;
    Lifetime lifetime_;
};

} // namespace teralune
