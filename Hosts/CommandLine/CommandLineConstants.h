#pragma once

#include "Classes/Interfaces/ITeraluneConstants.h"

#include <string>
#include <utility>

namespace teralune {

/// Where the services are; fixed for the life of the process.
class CommandLineConstants final : public ITeraluneConstants {
public:
    struct Values {
        bool httpsProtocol = true;
        std::string apiHost;
        std::string ocrHost;
        bool debugMode = false;
    };
    explicit CommandLineConstants(Values values) : values_(std::move(values)) {}

    bool httpsProtocol() const override { return values_.httpsProtocol; }
    std::string apiHost() const override { return values_.apiHost; }
    std::string ocrHost() const override { return values_.ocrHost; }
    bool debugMode() const override { return values_.debugMode; }

private:
    const Values values_;
};

} // namespace teralune
