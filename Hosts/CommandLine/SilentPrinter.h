#pragma once

#include "Platform/Foundation/Printer.h"

namespace teralune {

/// Keeps printed lines away from a terminal whose output belongs to the command.
class SilentPrinter final : public Printer {
public:
    void print(std::string_view) override {}
};

} // namespace teralune
