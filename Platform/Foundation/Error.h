#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>

namespace teralune {

/// What an error or a notification carries beside its name: texts, whole numbers and Booleans by key.
using UserInfo = std::map<std::string, std::variant<std::string, std::int64_t, bool>>;

/// An expected failure, as a value: which family it belongs to, which one it is there, and a text for people.
/// Two errors are equal when domain and code are.
struct Error {
    std::string domain;
    std::int64_t code = 0;
    /// One sentence that can be printed or recorded. Never holds a token, a cookie or a password.
    std::string localizedDescription;
    UserInfo userInfo;

    friend bool operator==(const Error& left, const Error& right) {
        return left.domain == right.domain && left.code == right.code;
    }
};

} // namespace teralune
