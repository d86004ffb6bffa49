#pragma once

#include "Classes/Interfaces/CrashReporterType.h"
#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/DateFormatter.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string_view>

namespace teralune {

class Printer;

/// The crash reporter of a host without a reporting service: appends each error and each logged line, with
/// its time, to a file that only its owner can read, and hands it to a printer where one is given. When the
/// file has grown past the limit it becomes "<file>.1", replacing an earlier one, and a new file begins.
///
/// Any thread, and several processes may share one file. Nothing fails and nothing is thrown: a line that
/// can't be written is dropped. Arguments that hold a token are written as "•••".
class LocalCrashReporter final : public CrashReporterType {
public:
    static constexpr std::uintmax_t DefaultSizeLimit = 1'048'576;

    explicit LocalCrashReporter(std::filesystem::path file, std::shared_ptr<Clock> clock,
                                std::shared_ptr<Printer> printer = {},
                                std::uintmax_t sizeLimit = DefaultSizeLimit);
    ~LocalCrashReporter() override;

    using CrashReporterType::TRL_CLSNSLogv;
    void recordError(const Error& error) override;
    void recordError(const Error& error, const UserInfo& additionalUserInfo) override;
    void TRL_CLSNSLogv(std::string_view format, std::span<const FormatArgument> arguments) override;

private:
    void report(std::string_view message);
    void append(std::string_view line);
    void openFile();
    void closeFile();
    bool isFull() const;
    /// Whether the open file still lies under its name, so that another process has not set it aside.
    bool isInPlace() const;

    const DateFormatter timestamps_;
    const std::filesystem::path file_;
    const std::shared_ptr<Clock> clock_;
    const std::shared_ptr<Printer> printer_;
    const std::uintmax_t sizeLimit_;

    std::mutex mutex_; ///< guards what follows
    int descriptor_ = -1;
    bool lineIsTorn_ = false; ///< the last write ended inside a line
};

} // namespace teralune
