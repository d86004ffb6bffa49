#pragma once

#include "Platform/Defaults/UserDefaults.h"

#include <map>
#include <mutex>

namespace teralune {

/// User defaults that live as long as the object: for tests and for hosts that keep nothing.
class InMemoryUserDefaults final : public UserDefaults {
public:
    std::optional<Value> value(std::string_view key) const override;
    void set(std::string_view key, Value value) override;
    void remove(std::string_view key) override;
    void synchronize() override {}

private:
    mutable std::mutex mutex_;
    std::map<std::string, Value, std::less<>> values_;
};

} // namespace teralune
