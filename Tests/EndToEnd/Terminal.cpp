#include "Tests/EndToEnd/Terminal.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace teralune {
namespace {

/// The tester's own, without what would change what the program does.
std::map<std::string, std::string> plainEnvironment() {
    std::map<std::string, std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::string name(text.substr(0, text.find('=')));
        if (!name.starts_with("TERALUNE_") && !name.starts_with("LC_") && !name.starts_with("LANG"))
            variables[name] = text.substr(std::min(text.size(), name.size() + 1));
    }
    return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

Terminal::Running Terminal::start(const std::vector<std::string>& arguments, const char* outputDevice) {
    std::vector<std::string> words = {TERALUNE_PROGRAM, "--data-dir", dataFolder().string()};
    words.insert(words.end(), options_.begin(), options_.end());
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables;
    std::map<std::string, std::string> all = environment;
    all.merge(plainEnvironment());
    for (const auto& [name, value] : all)
        variables.push_back(name + "=" + value);

    const std::filesystem::path outputFile = folder() / ("output" + std::to_string(++started_));
    std::array<int, 2> error{};
    if (::pipe2(error.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(
        &actions, STDOUT_FILENO, outputDevice ? outputDevice : outputFile.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_adddup2(&actions, error[1], STDERR_FILENO);
    pid_t process = -1;
    const int failure = ::posix_spawn(&process, TERALUNE_PROGRAM, &actions, nullptr, pointersTo(words).data(),
                                      pointersTo(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(error[1]);
    if (failure != 0)
        throw std::runtime_error("the program can't be started");
    return {process, error[0], outputFile};
}

bool Terminal::keeps(std::string_view text, std::string_view namePrefix) const {
    const std::filesystem::directory_iterator files(dataFolder());
    return std::any_of(begin(files), end(files), [&](const std::filesystem::directory_entry& file) {
        return file.path().filename().string().starts_with(namePrefix) &&
               TemporaryFolder::read(file.path()).find(text) != std::string::npos;
    });
}

Terminal::Running::Running(pid_t process, int error, std::filesystem::path outputFile)
    : process_(process)
    , errorDescriptor_(error)
    , outputFile_(std::move(outputFile)) {}

Terminal::Running::~Running() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    ::close(errorDescriptor_);
}

bool Terminal::Running::readError() {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(errorDescriptor_, bytes.data(), bytes.size());
    if (count > 0)
        error_.append(bytes.data(), static_cast<std::size_t>(count));
    return count > 0;
}

bool Terminal::Running::waitForError(std::string_view text) {
    while (error_.find(text) == std::string::npos)
        if (!readError())
            return false;
    return true;
}

Terminal::Outcome Terminal::Running::wait() {
    while (readError()) {
    }
    int status = 0;
    ::waitpid(std::exchange(process_, -1), &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
            TemporaryFolder::read(outputFile_), error_};
}

} // namespace teralune
