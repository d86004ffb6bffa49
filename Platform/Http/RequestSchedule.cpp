#include "Platform/Http/RequestSchedule.h"

namespace teralune {

void RequestSchedule::add(Id id, const std::string& hostName, TransferLane lane) {
    const auto host = hosts_.try_emplace(hostName).first;
    entries_.emplace(id, Entry{host, lane});
    if (lane == TransferLane::control) {
        waitingControl_.insert(id);
    } else {
        change(host, [id](Host& changed) { changed.waiting.insert(id); });
    }
}

std::optional<RequestSchedule::Id> RequestSchedule::startNext() {
    if (!waitingControl_.empty() && !isControlTaken_) {
        return startNextControl();
    }
    if (first_.empty() || started_ >= places_) {
        return std::nullopt;
    }
    const auto [id, host] = *first_.begin();
    ++started_;
    entries_.at(id).isStarted = true;
    change(host, [id = id](Host& changed) {
        changed.waiting.erase(id);
        ++changed.started;
    });
    return id;
}

void RequestSchedule::remove(Id id) {
    const auto found = entries_.find(id);
    if (found == entries_.end()) {
        return;
    }
    const Entry entry = found->second;
    entries_.erase(found);
    if (entry.lane == TransferLane::control) {
        waitingControl_.erase(id);
        isControlTaken_ = isControlTaken_ && !entry.isStarted;
    } else if (entry.isStarted) {
        --started_;
        change(entry.host, [](Host& changed) { --changed.started; });
    } else {
        change(entry.host, [id](Host& changed) { changed.waiting.erase(id); });
    }
}

std::optional<RequestSchedule::Id> RequestSchedule::startNextControl() {
    const Id id = *waitingControl_.begin();
    waitingControl_.erase(id);
    entries_.at(id).isStarted = true;
    isControlTaken_ = true;
    return id;
}

template<class Change>
void RequestSchedule::change(Hosts::iterator host, Change change) {
    if (canStart(host->second)) {
        first_.erase(*host->second.waiting.begin());
    }
    change(host->second);
    if (canStart(host->second)) {
        first_.emplace(*host->second.waiting.begin(), host);
    }
}

} // namespace teralune
