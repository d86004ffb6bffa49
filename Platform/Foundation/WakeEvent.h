#pragma once

#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/Result.h"

#include <chrono>
#include <optional>
#include <vector>

struct pollfd;

namespace teralune {

/// Lets a thread wait on file descriptors and another end that wait at once.
class WakeEvent {
public:
    using Deadline = std::optional<std::chrono::steady_clock::time_point>;

    /// Fails when the process may open no more files.
    static Result<WakeEvent> make();

    /// Ends this wait and every later one. Any thread.
    void signal() const;
    /// Waits until signal(), until one of the descriptors is ready, as poll() tells in them, or until the
    /// deadline. Returns whether signal() was called.
    bool wait(std::vector<pollfd>& descriptors, Deadline deadline) const;

private:
    explicit WakeEvent(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}
    FileDescriptor descriptor_;
};

} // namespace teralune
