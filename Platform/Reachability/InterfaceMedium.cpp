#include "Platform/Reachability/InterfaceMedium.h"

#include <fstream>
#include <string>

namespace teralune {

InterfaceMedium interfaceMedium(const std::filesystem::path& networkClassFolder, std::string_view name) {
    // A name is one path component for the kernel too; this keeps a forged one inside the folder.
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string_view::npos)
        return InterfaceMedium::ethernetOrWiFi;
    std::ifstream description(networkClassFolder / name / "uevent");
    for (std::string line; std::getline(description, line);) {
        if (line == "DEVTYPE=wwan")
            return InterfaceMedium::cellular;
    }
    return InterfaceMedium::ethernetOrWiFi;
}

} // namespace teralune
