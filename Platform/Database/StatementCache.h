#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

struct sqlite3_stmt;

namespace teralune {

/// The prepared statements of one connection that are not in use, by their SQL. Holds a bounded number; a
/// statement beyond it, or for which there is no memory, is finalized instead of kept.
class StatementCache {
public:
    StatementCache() = default;
    ~StatementCache();
    StatementCache(const StatementCache&) = delete;
    StatementCache& operator=(const StatementCache&) = delete;

    /// Null when none is idle. The caller owns what it takes.
    sqlite3_stmt* take(std::string_view sql);
    void giveBack(sqlite3_stmt* statement) noexcept;

private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    std::unordered_map<std::string, sqlite3_stmt*, TextHash, std::equal_to<>> idle_;
};

} // namespace teralune
