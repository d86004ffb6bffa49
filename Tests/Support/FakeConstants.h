#pragma once

#include "Classes/Interfaces/ITeraluneConstants.h"

namespace teralune {

/// Two hosts that no request reaches. Set it before it is used.
class FakeConstants final : public ITeraluneConstants {
public:
    bool isHttps = true;
    std::string api = "api.test";
    std::string ocr = "ocr.test";
    bool isDebug = false;

    bool httpsProtocol() const override { return isHttps; }
    std::string apiHost() const override { return api; }
    std::string ocrHost() const override { return ocr; }
    bool debugMode() const override { return isDebug; }
};

} // namespace teralune
