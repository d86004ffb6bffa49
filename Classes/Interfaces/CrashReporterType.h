#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/StringFormat.h"

#include <initializer_list>
#include <span>
#include <string_view>

namespace teralune {

/// The host's sink of errors and of "logged" lines. Every operation may be called from any thread.
class CrashReporterType {
public:
    virtual ~CrashReporterType() = default;

    virtual void recordError(const Error& error) = 0;
    virtual void recordError(const Error& error, const UserInfo& additionalUserInfo) = 0;
    /// A line with the placeholders of formatString() and their arguments. May hold a token where the
    /// library's text is fixed to contain one, so a reporter that writes to disk masks the arguments of such
    /// lines.
    virtual void TRL_CLSNSLogv(std::string_view format, std::span<const FormatArgument> arguments) = 0;

    void TRL_CLSNSLogv(std::string_view format, std::initializer_list<FormatArgument> arguments = {}) {
        TRL_CLSNSLogv(format, std::span(arguments.begin(), arguments.size()));
    }
};

} // namespace teralune
