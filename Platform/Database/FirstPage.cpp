#include "Platform/Database/FirstPage.h"

#include "Platform/Database/DatabaseError.h"
#include "Platform/Database/PrivateFile.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>

namespace teralune {
namespace {

constexpr std::size_t pageSize = 4096;
constexpr std::size_t headerSize = 100;

/// The fields of the header that never change in a file of ours: its mark, the size of a page, unused bytes
/// and shares of a page, and format and encoding. SQLite's file format gives their places.
constexpr struct {
    std::size_t first;
    std::size_t last;
} constants[] = {{0, 17}, {20, 23}, {44, 47}, {52, 59}};
/// How many pages there are and which of them are free. All zero, SQLite counts the pages by itself.
constexpr std::size_t counts = 28;
constexpr std::size_t countsEnd = 40;

std::string beginningOf(const std::filesystem::path& file, std::size_t length) {
    std::string bytes(length, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes.data(), static_cast<std::streamsize>(length));
    return bytes;
}

std::filesystem::path logOf(std::filesystem::path file) {
    file += "-wal";
    return file;
}

} // namespace

Result<FirstPage> FirstPage::of(const std::filesystem::path& whole) {
    std::string bytes = beginningOf(whole, pageSize);
    if (bytes.front() == '\0') {
        return systemError(EIO, whole);
    }
    std::fill(bytes.begin() + counts, bytes.begin() + countsEnd, '\0');
    return FirstPage(std::move(bytes));
}

bool FirstPage::hasSameHeader(const std::filesystem::path& file) const {
    const std::string header = beginningOf(file, headerSize);
    return std::all_of(std::begin(constants), std::end(constants), [&](const auto& field) {
        const std::size_t length = field.last - field.first + 1;
        return header.compare(field.first, length, bytes_, field.first, length) == 0;
    });
}

Result<void> FirstPage::copyWith(Part part, const std::filesystem::path& file,
                                 const std::filesystem::path& copy) const {
    using std::filesystem::copy_options;
    std::error_code failure;
    // The copies take the mode of what they replace.
    for (const auto& [from, to] : {std::pair(file, copy), std::pair(logOf(file), logOf(copy))}) {
        if (!std::filesystem::exists(from, failure)) {
            continue;
        }
        if (Result<void> made = makePrivateFile(to); !made) {
            return made;
        }
        if (!std::filesystem::copy_file(from, to, copy_options::overwrite_existing, failure)) {
            return systemError(failure.value(), to);
        }
    }
    std::fstream stream(copy, std::ios::binary | std::ios::in | std::ios::out);
    const std::size_t length = part == Part::header ? headerSize : bytes_.size();
    stream.write(bytes_.data(), static_cast<std::streamsize>(length));
    stream.close();
    return stream ? Result<void>() : systemError(EIO, copy);
}

} // namespace teralune
