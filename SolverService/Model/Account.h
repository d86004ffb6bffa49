#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace teralune::service {

/// A user as the service knows one.
struct Account {
    std::int64_t id = 0;
    /// The identifier that clients know the user by.
    std::string connected;
    /// Absent for a user of another identity provider who has added none yet.
    std::optional<std::string> email;
    std::string firstName;
    std::string lastName;
    /// Seconds since 1970, UTC.
    std::int64_t registered = 0;
    int numDecimalDisplay = 5;
    /// "showSteps", "hideSteps" or "stepByStep".
    std::string steps;
    std::vector<std::string> dismissedNotifications;
    bool hasPassword = false;
};

} // namespace teralune::service
