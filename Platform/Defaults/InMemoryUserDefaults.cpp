#include "Platform/Defaults/InMemoryUserDefaults.h"

#include <utility>

namespace teralune {

std::optional<UserDefaults::Value> InMemoryUserDefaults::value(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    const auto found = values_.find(key);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void InMemoryUserDefaults::set(std::string_view key, Value value) {
    const std::lock_guard lock(mutex_);
    values_.insert_or_assign(std::string(key), std::move(value));
}

void InMemoryUserDefaults::remove(std::string_view key) {
    const std::lock_guard lock(mutex_);
    if (const auto found = values_.find(key); found != values_.end()) {
        values_.erase(found);
    }
}

} // namespace teralune
