#pragma once

#include <string>

namespace teralune {

/// What the host is configured with. Read afresh for each request, on any thread.
class ITeraluneConstants {
public:
    virtual ~ITeraluneConstants() = default;

    virtual bool httpsProtocol() const = 0;
    /// Host and, where it is not the scheme's own, ":" and port of the solver service.
    virtual std::string apiHost() const = 0;
    /// The same of the recognition service.
    virtual std::string ocrHost() const = 0;
    virtual bool debugMode() const = 0;
};

} // namespace teralune
