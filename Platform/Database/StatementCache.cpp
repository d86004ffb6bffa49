#include "Platform/Database/StatementCache.h"

#include <new>
#include <sqlite3.h>

namespace teralune {
namespace {

constexpr std::size_t capacity = 64;

} // namespace

StatementCache::~StatementCache() {
    for (const auto& [sql, statement] : idle_) {
        sqlite3_finalize(statement);
    }
}

sqlite3_stmt* StatementCache::take(std::string_view sql) {
    const auto found = idle_.find(sql);
    if (found == idle_.end()) {
        return nullptr;
    }
    sqlite3_stmt* const statement = found->second;
    found->second = nullptr;
    return statement;
}

void StatementCache::giveBack(sqlite3_stmt* statement) noexcept {
    const std::string_view sql = sqlite3_sql(statement);
    auto slot = idle_.find(sql);
    if (slot == idle_.end() && idle_.size() < capacity) {
        try {
            slot = idle_.emplace(sql, nullptr).first;
        } catch (const std::bad_alloc&) {
            slot = idle_.end();
        }
    }
    if (slot == idle_.end() || slot->second != nullptr) {
        sqlite3_finalize(statement);
    } else {
        slot->second = statement;
    }
}

} // namespace teralune
