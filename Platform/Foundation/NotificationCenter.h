#pragma once

#include "Platform/Foundation/Error.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace teralune {

/// A named announcement. The object, where a notification has one, is a Boolean or a text.
struct Notification {
    std::string name;
    std::optional<std::variant<bool, std::string>> object;
    UserInfo userInfo;
};

/// Keeps an observer installed; dropping it removes the observer. After the drop no new call begins; a call
/// that is under way on another thread may still end. May be dropped from inside the observer and may
/// outlive the centre.
class Observation {
public:
    Observation() = default;
    Observation(Observation&&) noexcept = default;
    Observation& operator=(Observation&& other) noexcept;
    ~Observation();

private:
    friend class NotificationCenter;
    struct Observer;
    explicit Observation(std::shared_ptr<Observer> observer);
    std::shared_ptr<Observer> observer_;
};

/// Delivers notifications to their observers, on the thread that posts and before post() returns, in the
/// order in which the observers were added. Every operation may be called from any thread, also from inside
/// an observer; no lock is held while observers run.
class NotificationCenter {
public:
    using Handler = std::function<void(const Notification&)>;

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    [[nodiscard]] Observation observe(std::string name, Handler handler);
    void post(const Notification& notification);

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace teralune
