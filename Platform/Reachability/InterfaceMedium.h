#pragma once

#include <filesystem>
#include <string_view>

namespace teralune {

/// What an interface sends over, as far as a status tells it.
enum class InterfaceMedium {
    ethernetOrWiFi,
    cellular,
};

/// Reads the medium of an interface from the folder in which the system describes its interfaces, normally
/// "/sys/class/net". One that the folder does not know counts as Ethernet.
InterfaceMedium interfaceMedium(const std::filesystem::path& networkClassFolder, std::string_view name);

} // namespace teralune
