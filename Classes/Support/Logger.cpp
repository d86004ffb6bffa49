#include "Classes/Support/Logger.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/NetworkingType.h"
#include "Platform/Defaults/UserDefaults.h"
#include "Platform/Foundation/Printer.h"

#include <boost/json/array.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <string_view>
#include <utility>

namespace teralune {
namespace {

constexpr std::string_view QueryLogCacheKey = "QueryLogCache";

bool isStringDictionary(const boost::json::value& value) {
    const boost::json::object* dictionary = value.if_object();
    return dictionary && std::all_of(dictionary->begin(), dictionary->end(),
                                     [](const auto& entry) { return entry.value().is_string(); });
}

} // namespace

void Logger::resendCachedLogs() {
    loadCache();
    sendNextCachedLogs();
}

void Logger::sendNextCachedLogs() {
    if (offlineQueryLogCache_.empty()) {
        print("No logs cached.");
        return;
    }
    const QueryLog log = std::move(offlineQueryLogCache_.front());
    offlineQueryLogCache_.pop_front();
    // Before it is sent, so that a crash can't send it twice.
    saveCache();
    print("Sending cached log for query " + log.query);
    logCachedSteps(log.query, log.topic, log.offline);
}

void Logger::logCachedSteps(const std::string& query, const std::optional<std::string>& topic,
                            Offline offline) {
    application_.networking().logCachedSteps(
        query, topic, offline,
        [this, watch = lifetime_.watch(), log = QueryLog(query, topic, offline)](bool success) {
            if (!watch.isOver())
                sent(success, log);
        });
}

void Logger::sent(bool success, QueryLog log) {
    if (success) {
        print("Successfully sent log.");
        sendNextCachedLogs();
        return;
    }
    print("Failed to send cached steps log. Enqueue for later.");
    offlineQueryLogCache_.push_back(std::move(log));
    saveCache();
}

void Logger::saveCache() const {
    boost::json::array dictionaries;
    for (const QueryLog& log : offlineQueryLogCache_)
        dictionaries.push_back(log.dictionary());
    application_.platform().userDefaults->set(QueryLogCacheKey, std::move(dictionaries));
    print("Saved " + std::to_string(offlineQueryLogCache_.size()) + " log cache items to disk.");
}

void Logger::loadCache() {
    // The guard lets a first load never through: nothing but a load sets the flag. Records of an earlier run
    // are therefore not sent again, and the first save replaces them. The hosts count on that.
    if (!hasBeenLoaded_)
        return;
    hasBeenLoaded_ = true;
    const std::optional<boost::json::array> stored =
        application_.platform().userDefaults->array(QueryLogCacheKey);
    if (!stored || !std::all_of(stored->begin(), stored->end(), isStringDictionary)) {
        print("No offline log cache items found on disk.");
        return;
    }
    for (const boost::json::value& dictionary : *stored)
        offlineQueryLogCache_.emplace_back(dictionary.get_object());
    print("Successfully loaded " + std::to_string(stored->size()) + " log cache items from disk.");
}

void Logger::print(const std::string& line) const {
    application_.platform().printer->print(line);
}

} // namespace teralune
