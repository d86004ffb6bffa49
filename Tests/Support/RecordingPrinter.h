#pragma once

#include "Platform/Foundation/Printer.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace teralune {

/// Keeps what was printed instead of writing it, in order and from any thread. A test takes the lines that it
/// expects and checks at its end that none is left.
class RecordingPrinter final : public Printer {
public:
    void print(std::string_view line) override {
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(line);
    }

    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

    /// The lines since the last call.
    std::vector<std::string> takeLines() {
        const std::lock_guard lock(mutex_);
        return std::exchange(lines_, {});
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace teralune
