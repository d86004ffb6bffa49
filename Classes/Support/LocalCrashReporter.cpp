#include "Classes/Support/LocalCrashReporter.h"

#include "Platform/Database/PrivateFile.h"
#include "Platform/Foundation/Printer.h"
#include "Platform/Foundation/Utf8.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace teralune {
namespace {

constexpr std::string_view mask = "•••";

/// A line whose format holds one of these announces a secret as its argument.
constexpr std::array<std::string_view, 2> secretFormats = {"access token", "password"};
/// An argument that holds one of these, such as the beginning of a sign-in reply, shows a token.
constexpr std::array<std::string_view, 4> secretMarks = {"jwt", "tq.token", "PLAY_SESSION", "password"};

template<std::size_t count>
bool containsAny(std::string_view text, const std::array<std::string_view, count>& parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [text](std::string_view part) { return text.find(part) != std::string_view::npos; });
}

std::string masked(std::string_view format, std::span<const FormatArgument> arguments) {
    const bool isSecret = containsAny(format, secretFormats);
    std::vector<FormatArgument> shown(arguments.begin(), arguments.end());
    for (FormatArgument& argument : shown) {
        const auto* text = std::get_if<std::string>(&argument);
        if (isSecret || (text && containsAny(*text, secretMarks)))
            argument = std::string(mask);
    }
    return formatString(format, shown);
}

/// One line of valid UTF-8, whatever a server has put into the message.
std::string onOneLine(std::string_view message) {
    std::string line = replacingInvalidUtf8(message);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; },
        ' ');
    return line;
}

std::string describe(const UserInfo& userInfo) {
    std::string text;
    for (const auto& [key, value] : userInfo) {
        text += text.empty() ? " {" : ", ";
        text += key + ": ";
        if (const auto* word = std::get_if<std::string>(&value))
            text += containsAny(*word, secretMarks) ? mask : std::string_view(*word);
        else if (const auto* number = std::get_if<std::int64_t>(&value))
            text += std::to_string(*number);
        else
            text += std::get<bool>(value) ? "true" : "false";
    }
    return text.empty() ? text : text + "}";
}

} // namespace

LocalCrashReporter::LocalCrashReporter(std::filesystem::path file, std::shared_ptr<Clock> clock,
                                       std::shared_ptr<Printer> printer, std::uintmax_t sizeLimit)
    : timestamps_({.pattern = "yyyy-MM-dd'T'HH:mm:ss.SSS'Z'", .timeZone = "UTC"})
    , file_(std::move(file))
    , clock_(std::move(clock))
    , printer_(std::move(printer))
    , sizeLimit_(sizeLimit) {}

LocalCrashReporter::~LocalCrashReporter() {
    closeFile();
}

void LocalCrashReporter::recordError(const Error& error) {
    recordError(error, {});
}

void LocalCrashReporter::recordError(const Error& error, const UserInfo& additionalUserInfo) {
    UserInfo userInfo = additionalUserInfo;
    userInfo.insert(error.userInfo.begin(), error.userInfo.end());
    report("error " + error.domain + " " + std::to_string(error.code) + ": " + error.localizedDescription +
           describe(userInfo));
}

void LocalCrashReporter::TRL_CLSNSLogv(std::string_view format, std::span<const FormatArgument> arguments) {
    report(masked(format, arguments));
}

void LocalCrashReporter::report(std::string_view message) {
    const std::string line = onOneLine(message);
    {
        const std::lock_guard lock(mutex_);
        append(timestamps_.string(clock_->now()) + " " + line + "\n");
    }
    if (printer_)
        printer_->print(line);
}

void LocalCrashReporter::append(std::string_view line) {
    if (descriptor_ < 0)
        openFile();
    if (isFull()) {
        // Where another process has set the file aside already, its successor is taken up as it is.
        if (isInPlace()) {
            std::error_code ignored;
            std::filesystem::rename(file_, file_.string() + ".1", ignored);
        }
        closeFile();
        openFile();
    }
    // A full file that can't be set aside takes no more lines.
    if (descriptor_ < 0 || isFull())
        return;
    // One write, so that lines of several processes do not mix. On a full disk it may end early.
    const std::string bytes = (lineIsTorn_ ? "\n" : "") + std::string(line);
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written > 0)
        lineIsTorn_ = static_cast<std::size_t>(written) < bytes.size();
}

void LocalCrashReporter::openFile() {
    if (!makePrivateFile(file_))
        return;
    descriptor_ = ::open(file_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    lineIsTorn_ = false;
}

void LocalCrashReporter::closeFile() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
    descriptor_ = -1;
}

bool LocalCrashReporter::isFull() const {
    struct stat status {};
    return descriptor_ >= 0 && ::fstat(descriptor_, &status) == 0 &&
           static_cast<std::uintmax_t>(status.st_size) > sizeLimit_;
}

bool LocalCrashReporter::isInPlace() const {
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor_, &opened) == 0 && ::lstat(file_.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

} // namespace teralune
