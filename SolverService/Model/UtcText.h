#pragma once

#include <cstdint>
#include <string>

namespace teralune::service {

/// A note's time as the notebook endpoints write it, in UTC: "Jan 05, 2019 03:04:05 PM".
std::string noteTime(std::int64_t secondsSinceEpoch);

/// A registration time as the user record writes it, in UTC: "Jan 5, 2019 03:04:05 PM".
std::string registrationTime(std::int64_t secondsSinceEpoch);

} // namespace teralune::service
