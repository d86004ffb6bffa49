#pragma once

#include "Platform/Defaults/UserDefaults.h"
#include "Platform/Foundation/Result.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace teralune {

/// User defaults in one SQLite file, mode 0600, in a folder that it makes with mode 0700. Survives a kill and
/// a power loss at any moment: a key then has its last or its previous value. Reads are answered from memory;
/// a change made by another process is seen by the next read.
class SqliteUserDefaults final : public UserDefaults {
public:
    using FailureReporter = std::function<void(const Error&)>;

    /// Fails when the folder or the file can't be made, read or written, or holds something else.
    static Result<std::unique_ptr<SqliteUserDefaults>> open(const std::filesystem::path& file,
                                                            FailureReporter onFailure = {});
    ~SqliteUserDefaults() override;

    std::optional<Value> value(std::string_view key) const override;
    void set(std::string_view key, Value value) override;
    void remove(std::string_view key) override;
    void synchronize() override;

private:
    struct State;
    explicit SqliteUserDefaults(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

} // namespace teralune
