#pragma once

#include "Platform/Foundation/Result.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace teralune {

class Database;

/// The first page of a whole database file, to be put in the place of a damaged one. SQLite reads nothing
/// behind a header or a list of tables that is damaged, though all of the rows may be there.
/// Nothing here opens the damaged file, which would cost the lock of the connection that has it open.
class FirstPage {
public:
    enum class Part : std::uint8_t {
        header, ///< what is the same in all files of this library's making
        page    ///< also the places of the tables, which are the same in files that were made in the same way
    };

    static Result<FirstPage> of(const std::filesystem::path& whole);

    /// Whether the damaged file's header says what that of the whole one does.
    bool hasSameHeader(const Database& damaged) const;
    /// Makes a copy, mode 0600, of the damaged file and of the log beside it, with that part exchanged. Pages
    /// that can't be read are zero in it. What is at the place of the copy is lost; after a failure, such as
    /// a full disk (isFull()), nothing is there.
    Result<void> copyWith(Part part, const Database& damaged, const std::filesystem::path& file,
                          const std::filesystem::path& copy) const;

private:
    Result<void> writeCopy(Part part, const Database& damaged, const std::filesystem::path& file,
                           const std::filesystem::path& copy) const;
    explicit FirstPage(std::string bytes) : bytes_(std::move(bytes)) {}
    std::string bytes_;
};

} // namespace teralune
