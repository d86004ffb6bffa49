#pragma once

#include <mutex>
#include <string_view>

namespace teralune {

/// Where "printed" lines go. Callable from any thread; a line is never split by another.
class Printer {
public:
    virtual ~Printer() = default;
    /// One line, without its line feed.
    virtual void print(std::string_view line) = 0;
};

/// Writes each line to a file descriptor of the process: standard output unless told otherwise.
class StandardPrinter final : public Printer {
public:
    enum class Stream { output, error };
    explicit StandardPrinter(Stream stream = Stream::output) : stream_(stream) {}
    void print(std::string_view line) override;

private:
    Stream stream_;
    std::mutex mutex_;
};

} // namespace teralune
