#pragma once

#include "SolverService/Fault.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace teralune::service {

/// The script of what goes wrong. Scripts of a path are used up in the order in which they were written,
/// those of a path before those of every path. Used from any thread.
class Faults {
public:
    /// For script(): every path.
    static constexpr std::string_view everyPath = "*";
    /// For script(): until clear().
    static constexpr std::size_t everyTime = static_cast<std::size_t>(-1);

    /// The next requests to the path meet the fault, so many of them.
    void script(std::string_view path, Fault fault, std::size_t times = 1);
    /// Forgets what is not used up. Requests that are held stay held.
    void clear();

    /// Lets every held request go on.
    void release();
    /// Waits until so many requests are held at once; false when the limit passed first.
    bool waitForHeld(std::size_t count, std::chrono::milliseconds limit) const;

    /// For the service: the fault that a request to the path meets, used up by this call.
    std::optional<Fault> take(std::string_view path);
    /// For the service: holds and delays the calling thread as the fault says.
    void pause(const Fault& fault);
    /// For the service: ends every pause, those to come too.
    void stop();

private:
    struct Script {
        std::string path;
        Fault fault;
        std::size_t left = 0;
    };

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::list<Script> scripts_;
    std::size_t held_ = 0;
    std::size_t releases_ = 0;
    bool stopped_ = false;
};

} // namespace teralune::service
