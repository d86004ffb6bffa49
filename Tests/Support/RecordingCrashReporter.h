#pragma once

#include "Classes/Interfaces/CrashReporterType.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace teralune {

/// Keeps what was logged and recorded, in order and from any thread.
class RecordingCrashReporter final : public CrashReporterType {
public:
    struct Recorded {
        Error error;
        UserInfo additionalUserInfo;
    };

    void recordError(const Error& error) override { recordError(error, {}); }
    void recordError(const Error& error, const UserInfo& additionalUserInfo) override {
        const std::lock_guard lock(mutex_);
        errors_.push_back({error, additionalUserInfo});
    }
    using CrashReporterType::TRL_CLSNSLogv;
    void TRL_CLSNSLogv(std::string_view format, std::span<const FormatArgument> arguments) override {
        const std::lock_guard lock(mutex_);
        lines_.push_back(formatString(format, arguments));
    }

    /// The lines, formatted.
    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    /// The lines since the last call.
    std::vector<std::string> takeLines() {
        const std::lock_guard lock(mutex_);
        return std::exchange(lines_, {});
    }
    /// The errors since the last call.
    std::vector<Recorded> takeErrors() {
        const std::lock_guard lock(mutex_);
        return std::exchange(errors_, {});
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    std::vector<Recorded> errors_;
};

} // namespace teralune
