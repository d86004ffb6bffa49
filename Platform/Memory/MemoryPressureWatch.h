#pragma once

#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Memory/MemoryPressureLevel.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace teralune {

/// Where a process looks for signs of memory pressure.
struct MemoryPressureSurroundings {
    /// Stands before every path that is not the service manager's.
    std::filesystem::path rootFolder = "/";
    /// A variable of the environment; the process's own by default.
    std::function<std::optional<std::string>(const char* name)> environment = processEnvironment;

    static std::optional<std::string> processEnvironment(const char* name);
};

/// One open file that becomes ready when the system is under pressure.
struct MemoryPressureWatch {
    FileDescriptor descriptor;
    /// What poll() has to wait for.
    short events = 0;
    /// Whether what arrives has to be read and thrown away. The kernel's own files must not be read.
    bool discardsInput = false;
    MemoryPressureLevel level = MemoryPressureLevel::warning;

    /// Takes what has arrived; false when the other side is gone.
    bool discardInput() const;

    /// Opens what there is to watch: what the service manager names ($MEMORY_PRESSURE_WATCH and
    /// $MEMORY_PRESSURE_WRITE), or else the pressure file of the control group, or else that of the whole
    /// system. Empty when none can be watched or when the service manager has switched it off.
    static std::vector<MemoryPressureWatch> openAll(const MemoryPressureSurroundings& surroundings);
};

} // namespace teralune
