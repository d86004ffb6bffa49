#pragma once

#include "Platform/Foundation/Result.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace SQLite { // NOLINT(readability-identifier-naming): not ours to name
class Database;
}

namespace teralune::service {

using WallClock = std::function<std::chrono::system_clock::time_point()>;

/// Where the service keeps what it knows: one SQLite file, or memory that ends with the service. The
/// classes around it (Accounts, Tokens, Notebook and the others) each speak for some of its tables and
/// may be used from any thread; what SQLite throws ends at the router or at start().
class ServerModel {
public:
    /// Opens or makes the file; ":memory:" makes a fresh one in memory. A file of another layout than
    /// this service's is refused, nothing in it is changed.
    static Result<std::unique_ptr<ServerModel>> open(const std::string& file, WallClock clock);
    ~ServerModel();

    /// The database for one thread at a time, for as long as the access lives.
    class Access {
    public:
        explicit Access(ServerModel& model) : lock_(model.mutex_), database_(*model.database_) {}
        SQLite::Database& operator*() const { return database_; }

    private:
        std::lock_guard<std::mutex> lock_;
        SQLite::Database& database_;
    };

    std::int64_t nowSeconds() const;

private:
    ServerModel(std::unique_ptr<SQLite::Database> database, WallClock clock);

    std::unique_ptr<SQLite::Database> database_;
    std::mutex mutex_;
    WallClock clock_;
};

} // namespace teralune::service
