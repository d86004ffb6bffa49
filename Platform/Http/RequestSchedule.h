#pragma once

#include "Platform/Http/HttpTransport.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>

namespace teralune {

/// Which request goes next: the first to come whose host has a free place, while there is a free place at
/// all. The control lane has one place of its own, so that its requests wait for nothing but each other.
/// Knows no network; used by one thread.
class RequestSchedule {
public:
    /// Grows in the order in which requests come.
    using Id = std::uint64_t;

    RequestSchedule(std::size_t placesPerHost, std::size_t places)
        : placesPerHost_(placesPerHost)
        , places_(places) {}

    void add(Id id, const std::string& host, TransferLane lane);
    /// The next request, which then takes a place; none when it has to wait.
    std::optional<Id> startNext();
    /// Forgets a request, be it waiting or started.
    void remove(Id id);

private:
    struct Host {
        std::set<Id> waiting;
        std::size_t started = 0;
    };
    using Hosts = std::map<std::string, Host, std::less<>>;
    struct Entry {
        Hosts::iterator host;
        TransferLane lane;
        bool isStarted = false;
    };

    std::optional<Id> startNextControl();
    /// Keeps first_ in step with a change to the host's waiting requests and places.
    template<class Change>
    void change(Hosts::iterator host, Change change);
    bool canStart(const Host& host) const { return !host.waiting.empty() && host.started < placesPerHost_; }

    const std::size_t placesPerHost_;
    const std::size_t places_;
    std::size_t started_ = 0;
    Hosts hosts_;
    std::unordered_map<Id, Entry> entries_;
    /// The first waiting request of each host that has a free place.
    std::map<Id, Hosts::iterator> first_;
    std::set<Id> waitingControl_;
    bool isControlTaken_ = false;
};

} // namespace teralune
