#pragma once

namespace teralune {

/// How the user signed in. The raw values are stored.
enum class LoginType {
    email = 0,
    facebook = 1,
    office365 = 2,
    none = 3, ///< not known
};

} // namespace teralune
