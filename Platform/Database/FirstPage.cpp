#include "Platform/Database/FirstPage.h"

#include "Platform/Database/Database.h"
#include "Platform/Database/DatabaseError.h"
#include "Platform/Database/PrivateFile.h"
#include "Platform/Foundation/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <string_view>
#include <system_error>
#include <unistd.h>

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

Result<void> writeAll(const FileDescriptor& descriptor, std::string_view bytes,
                      const std::filesystem::path& file) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor.get(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return systemError(errno, file);
        }
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return {};
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

bool FirstPage::hasSameHeader(const Database& damaged) const {
    const Result<std::string> header = damaged.fileBytes(0, headerSize);
    return header && std::all_of(std::begin(constants), std::end(constants), [&](const auto& field) {
               const std::size_t length = field.last - field.first + 1;
               return header.value().size() > field.last &&
                      header.value().compare(field.first, length, bytes_, field.first, length) == 0;
           });
}

Result<void> FirstPage::copyWith(Part part, const Database& damaged, const std::filesystem::path& file,
                                 const std::filesystem::path& copy) const {
    Result<void> written = writeCopy(part, damaged, file, copy);
    if (!written) {
        // Its room may be what the new file lacks.
        unlink(copy.c_str());
        unlink(logOf(copy).c_str());
    }
    return written;
}

Result<void> FirstPage::writeCopy(Part part, const Database& damaged, const std::filesystem::path& file,
                                  const std::filesystem::path& copy) const {
    if (Result<void> made = makePrivateFile(copy); !made) {
        return made;
    }
    const FileDescriptor descriptor(open(copy.c_str(), O_WRONLY | O_TRUNC | O_NOFOLLOW | O_CLOEXEC));
    if (!descriptor) {
        return systemError(errno, copy);
    }
    const Result<std::int64_t> size = damaged.fileSize();
    if (!size) {
        return size.error();
    }
    // Of an empty file the log may hold all pages, but without a first page SQLite would not look at it.
    for (std::int64_t offset = 0; offset == 0 || offset < size.value(); offset += pageSize) {
        Result<std::string> page = damaged.fileBytes(offset, pageSize);
        if (!page && !isUnreadable(page.error())) {
            return page.error();
        }
        std::string bytes = page ? std::move(page).value() : std::string(pageSize, '\0');
        if (offset == 0) {
            const std::size_t length = part == Part::header ? headerSize : bytes_.size();
            bytes.resize(std::max(bytes.size(), length));
            bytes.replace(0, length, bytes_, 0, length);
        }
        if (Result<void> written = writeAll(descriptor, bytes, copy); !written) {
            return written;
        }
    }
    // The log is a file of its own, on which nobody holds a lock.
    std::error_code failure;
    if (!std::filesystem::exists(logOf(file), failure)) {
        return {};
    }
    if (Result<void> made = makePrivateFile(logOf(copy)); !made) {
        return made;
    }
    std::filesystem::copy_file(logOf(file), logOf(copy), std::filesystem::copy_options::overwrite_existing,
                               failure);
    return failure ? systemError(failure.value(), logOf(copy)) : Result<void>();
}

} // namespace teralune
