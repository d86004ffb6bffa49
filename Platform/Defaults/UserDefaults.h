#pragma once

#include "Platform/Foundation/Date.h"

#include <boost/json/array.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace teralune {

/// Persistent settings by key, typed. A read and a write each are atomic and may be made from any thread.
/// A write is on disk when it returns. A value of another type than the one asked for reads as absent, but
/// for what the phone's store converts too: a Boolean reads as the integer 0 or 1, an integer as the Boolean
/// "not 0". A failing disk never throws: the write is kept in memory, and the failure is handed to the
/// reporter that the store was opened with. So is a write for which there is no memory; the setting then has
/// the value that it had. Only the copy of a value that is read may throw std::bad_alloc, since any other
/// answer would be wrong.
class UserDefaults {
public:
    using Value = std::variant<std::string, std::int64_t, bool, Date, boost::json::array>;

    virtual ~UserDefaults() = default;

    virtual std::optional<Value> value(std::string_view key) const = 0;
    virtual void set(std::string_view key, Value value) = 0;
    virtual void remove(std::string_view key) = 0;
    /// Makes sure that everything written so far is on disk.
    virtual void synchronize() = 0;

    std::optional<std::string> string(std::string_view key) const;
    /// 0 when absent.
    std::int64_t integer(std::string_view key) const;
    /// False when absent.
    bool boolean(std::string_view key) const;
    std::optional<Date> date(std::string_view key) const;
    std::optional<boost::json::array> array(std::string_view key) const;
    /// Writes the text, or removes the key when there is none.
    void setOptional(std::string_view key, const std::optional<std::string>& text);
};

} // namespace teralune
