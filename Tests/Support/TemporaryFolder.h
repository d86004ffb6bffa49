#pragma once

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace teralune {

/// A fresh folder, removed with all that is in it. Those of one process lie in a folder of the process's own,
/// and so do those of the processes that it starts: what a process leaves that is meant to die goes with the
/// one that waits for it.
class TemporaryFolder {
public:
    TemporaryFolder() : TemporaryFolder(ofProcess().path_) {}
    ~TemporaryFolder() {
        if (owner_ == getpid()) {
            std::error_code ignored;
            std::filesystem::remove_all(path_, ignored);
        }
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    /// Writes a file below the folder and makes the folders that it needs; returns where it lies.
    std::filesystem::path write(const std::filesystem::path& name, std::string_view contents) const {
        const std::filesystem::path file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << contents;
        return file;
    }
    /// The bytes of any file; none where there is no such file.
    static std::string read(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    explicit TemporaryFolder(const std::filesystem::path& parent) {
        std::string name = (parent / "teralune-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder: " + name);
        }
        path_ = name;
    }
    /// Every user may pass through it, for tests that give up the rights of root.
    static const TemporaryFolder& ofProcess() {
        static const TemporaryFolder folder(std::filesystem::temp_directory_path());
        static const bool isOpen =
            chmod(folder.path_.c_str(), 0711) == 0 && setenv("TMPDIR", folder.path_.c_str(), 1) == 0;
        if (!isOpen) {
            throw std::runtime_error("no temporary folder: " + folder.path_.string());
        }
        return folder;
    }

    std::filesystem::path path_;
    const pid_t owner_ = getpid();
};

} // namespace teralune
