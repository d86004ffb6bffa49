#include "Hosts/CommandLine/PasswordPrompt.h"

#include "Hosts/CommandLine/CommandError.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <termios.h>
#include <unistd.h>

namespace teralune {
namespace {

/// Switches the terminal's echo off while it lives.
class WithoutEcho {
public:
    WithoutEcho() {
        if (::tcgetattr(STDIN_FILENO, &before_) != 0)
            return;
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        changed_ = ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
    }
    ~WithoutEcho() {
        if (changed_)
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
    }
    WithoutEcho(const WithoutEcho&) = delete;
    WithoutEcho& operator=(const WithoutEcho&) = delete;

private:
    termios before_{};
    bool changed_ = false;
};

} // namespace

Result<std::string> askForPassword(const std::string& prompt, const char* environmentVariable) {
    if (const char* password = std::getenv(environmentVariable))
        return std::string(password);
    if (::isatty(STDIN_FILENO) == 0)
        return commandError("There is no terminal to ask for the password; set " +
                                std::string(environmentVariable) + ".",
                            ExitCode::wrongUsage);
    std::string password;
    std::fputs((prompt + ": ").c_str(), stderr);
    {
        const WithoutEcho silence;
        std::getline(std::cin, password);
    }
    std::fputs("\n", stderr);
    if (!std::cin)
        return commandError("No password was given.");
    return password;
}

} // namespace teralune
