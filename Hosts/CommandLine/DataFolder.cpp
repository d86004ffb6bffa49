#include "Hosts/CommandLine/DataFolder.h"

#include "Hosts/CommandLine/CommandError.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace teralune {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view storeFile = "DataModel2.sqlite";
constexpr std::string_view sqliteMagic{"SQLite format 3\0", 16};

Error unusable(const fs::path& path, const std::string& reason) {
    return commandError("The data folder can't be used: " + path.string() + ": " + reason);
}

/// A file is proven writable by writing one: permissions tell nothing of a read-only file system, nor of
/// root.
Result<void> proveWritable(const fs::path& folder) {
    std::string probe = (folder / ".writable-XXXXXX").string();
    const int descriptor = ::mkstemp(probe.data());
    if (descriptor < 0)
        return unusable(folder, std::generic_category().message(errno));
    ::close(descriptor);
    ::unlink(probe.c_str());
    return {};
}

Result<void> checkStore(const fs::path& store) {
    std::error_code missing;
    if (!fs::exists(store, missing))
        return {};
    if (!fs::is_regular_file(store, missing))
        return unusable(store, "it is not a file");
    if (::access(store.c_str(), R_OK | W_OK) != 0)
        return unusable(store, std::generic_category().message(errno));
    std::array<char, sqliteMagic.size()> head{};
    std::ifstream file(store, std::ios::binary);
    file.read(head.data(), head.size());
    if (!file && file.gcount() == 0 && file.eof())
        return {};
    if (std::string_view(head.data(), head.size()) != sqliteMagic)
        return unusable(store, "it holds something other than a notebook; store repair sets it aside");
    return {};
}

} // namespace

Result<void> prepareDataFolder(const fs::path& folder) {
    std::error_code failure;
    if (!fs::exists(folder, failure)) {
        // Whoever may write to a folder above this one can put another in its place, so those that are
        // missing are made the owner's alone, too. No thread runs yet that would make a file meanwhile.
        const mode_t before = ::umask(S_IRWXG | S_IRWXO);
        fs::create_directories(folder, failure);
        ::umask(before);
        if (failure)
            return unusable(folder, failure.message());
    }
    if (!fs::is_directory(folder, failure))
        return unusable(folder, "it is not a folder");
    if (Result<void> writable = proveWritable(folder); !writable)
        return writable;
    return checkStore(folder / storeFile);
}

} // namespace teralune
