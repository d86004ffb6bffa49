#pragma once

#include "Classes/Interfaces/CrashReporterType.h"
#include "Tests/Support/RecordingPrinter.h"

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
        lines_.print(formatString(format, arguments));
    }

    /// The lines, formatted; and those since the last call.
    std::vector<std::string> lines() const { return lines_.lines(); }
    std::vector<std::string> takeLines() { return lines_.takeLines(); }
    /// The errors since the last call.
    std::vector<Recorded> takeErrors() {
        const std::lock_guard lock(mutex_);
        return std::exchange(errors_, {});
    }

private:
    RecordingPrinter lines_;
    std::mutex mutex_;
    std::vector<Recorded> errors_;
};

} // namespace teralune
