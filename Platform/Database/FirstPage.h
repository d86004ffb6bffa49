#pragma once

#include "Platform/Foundation/Result.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace teralune {

/// The first page of a whole database file, to be put in the place of a damaged one. SQLite reads nothing
/// behind a header or a list of tables that is damaged, though all of the rows may be there.
class FirstPage {
public:
    enum class Part : std::uint8_t {
        header, ///< what is the same in all files of this library's making
        page    ///< also the places of the tables, which are the same in files that were made in the same way
    };

    static Result<FirstPage> of(const std::filesystem::path& whole);

    /// Whether the file's header says what that of the whole one does.
    bool hasSameHeader(const std::filesystem::path& file) const;
    /// Makes a copy, mode 0600, of the file and of the log beside it, with that part exchanged. What is at
    /// the place of the copy is lost.
    Result<void> copyWith(Part part, const std::filesystem::path& file,
                          const std::filesystem::path& copy) const;

private:
    explicit FirstPage(std::string bytes) : bytes_(std::move(bytes)) {}
    std::string bytes_;
};

} // namespace teralune
