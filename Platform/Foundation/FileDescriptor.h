#pragma once

#include <unistd.h>

#include <utility>

namespace teralune {

/// Owns one open file of the process and closes it at its end.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes what open() and its like return; -1 for none.
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }

    int get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }

private:
    int descriptor_ = -1;
};

} // namespace teralune
