#pragma once

#include "Tests/Support/TemporaryFolder.h"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace teralune {

/// Runs the real program as a user's shell would, with a data folder of its own that lasts as long as this.
class Terminal {
public:
    struct Outcome {
        int exitCode = -1; ///< 128 and the signal when it was killed
        std::string output;
        std::string error;
    };

    /// A program that runs. One that was not waited for is killed and reaped.
    class Running {
    public:
        Running(pid_t process, int error, std::filesystem::path outputFile);
        ~Running();
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

        pid_t process() const { return process_; }
        /// Waits until standard error holds the text; false when the program has closed it before.
        bool waitForError(std::string_view text);
        Outcome wait();

    private:
        bool readError();

        pid_t process_;
        int errorDescriptor_;
        std::string error_;
        std::filesystem::path outputFile_;
    };

    /// Options that go before every command, such as the host to talk to.
    explicit Terminal(std::vector<std::string> options = {}) : options_(std::move(options)) {}

    /// Set for the programs that are started from now on.
    std::map<std::string, std::string> environment;

    /// Standard output goes to the device where one is named, and is kept otherwise.
    Running start(const std::vector<std::string>& arguments, const char* outputDevice = nullptr);
    Outcome run(const std::vector<std::string>& arguments, const char* outputDevice = nullptr) {
        return start(arguments, outputDevice).wait();
    }

    const std::filesystem::path& folder() const { return folder_.path(); }
    std::filesystem::path dataFolder() const { return folder() / "data"; }
    void write(const char* name, std::string_view contents) const { folder_.write(name, contents); }
    /// Whether a file in the data folder whose name begins so holds the text.
    bool keeps(std::string_view text, std::string_view namePrefix = {}) const;

private:
    TemporaryFolder folder_;
    std::vector<std::string> options_;
    int started_ = 0;
};

} // namespace teralune
