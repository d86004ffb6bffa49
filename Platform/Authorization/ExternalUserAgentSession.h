#pragma once

#include <string_view>

namespace teralune {

/// A sign-in that is under way in a browser. The host keeps it and hands it the redirect that comes back.
class ExternalUserAgentSession {
public:
    virtual ~ExternalUserAgentSession() = default;
    /// Whether the URL is this flow's redirect; the flow then goes on with it.
    virtual bool resumeExternalUserAgentFlow(std::string_view url) = 0;
    virtual void cancel() = 0;
};

} // namespace teralune
