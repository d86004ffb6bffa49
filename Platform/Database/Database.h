#pragma once

#include "Platform/Database/Statement.h"
#include "Platform/Foundation/Result.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace teralune {

/// One connection to an SQLite file, used by one thread at a time; whoever shares it locks it. What fails
/// gives an Error of databaseErrorDomain, or of systemErrorDomain where the file can't be made. Only
/// std::bad_alloc is thrown, after which connection, statements and transactions can be used as after any
/// failure; it is for the owner of the connection to make an error of it.
///
/// A connection that may write makes the file (mode 0600) and its folder (0700) when they are missing, keeps
/// a write-ahead log, checks foreign keys and does not trust the file's schema: no function with side effects
/// runs from it, and it can't be damaged through SQL. A file that is empty or missing beside a log that is
/// not is damaged, and is not opened but for salvage: that would cost the log.
class Database {
public:
    enum class Access {
        readWrite,
        readOnly,
        /// For reading what is left of a damaged file, which stays as it is, its write-ahead log included;
        /// but for its mode, which becomes 0600. Opens whatever the file holds. Nobody else has the file open
        /// meanwhile, in this process or another; opening fails at once when somebody has (isLocked()). What
        /// it runs in all is bounded by the size of the file, since a view of another program's may never
        /// end: from then on its statements fail.
        salvage
    };
    /// Whether a statement is worth keeping prepared for the next use of the same SQL.
    enum class Reuse { kept, once };

    struct Options {
        std::filesystem::path file;
        Access access = Access::readWrite;
        /// How long to wait for another process that holds the file.
        std::chrono::milliseconds busyTimeout{5000};
    };

    /// Of the write-ahead log beside that file; 0 where there is none.
    static std::uintmax_t logSize(const std::filesystem::path& file);
    static Result<Database> open(const Options& options);
    ~Database();
    Database(Database&&) noexcept;
    Database& operator=(Database&&) noexcept;

    /// Runs one or more statements without parameters and drops their rows.
    Result<void> execute(std::string_view script);
    /// SQL that can't be prepared gives a statement that has failed.
    Statement statement(std::string_view sql, Reuse reuse = Reuse::kept);
    /// The first column of the first row; no row is an error.
    Result<std::int64_t> integer(std::string_view sql);

    /// The size of the file itself, without its log, and what lies at a place in it; less where it ends. Asks
    /// through the connection's own descriptor: closing any other one of the same file would drop its locks.
    Result<std::int64_t> fileSize() const;
    Result<std::string> fileBytes(std::int64_t offset, std::size_t length) const;

    /// From now on the parts of a schema that can't be read are passed over, and a file that was cut off is
    /// taken for what is left of it. For salvage.
    void passOverDamage();

    /// After some errors (a full disk, no memory) SQLite has rolled back by itself: what runs next would be
    /// committed on its own.
    bool isInTransaction() const;
    /// Whether the file can't be written, be it that its header asks for an SQLite that there is not. Known
    /// once something was read.
    bool isReadOnly() const;
    /// False where the file system can't have a write-ahead log. Readers and the writer then wait for each
    /// other.
    bool hasWriteAheadLog() const;
    std::int64_t lastInsertedRowID() const;

private:
    struct State;
    explicit Database(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

} // namespace teralune
