#include "Platform/Device/Device.h"

#include "Platform/Foundation/AsciiText.h"
#include "Platform/Foundation/Utf8.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string_view>

namespace teralune {

namespace {

constexpr std::size_t longestDescription = 100;

/// What firmware says when nobody filled in the field.
constexpr std::string_view placeholders[] = {"to be filled by o.e.m.",
                                             "system product name",
                                             "system version",
                                             "system manufacturer",
                                             "default string",
                                             "not specified",
                                             "not applicable",
                                             "none",
                                             "unknown",
                                             "o.e.m.",
                                             "n/a",
                                             "invalid"};

std::string contents(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string text(4096, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return text;
}

/// One line for people: no control characters, no blanks around it, not endless, and valid UTF-8.
std::string cleaned(std::string_view raw) {
    std::string text = replacingInvalidUtf8(raw);
    std::erase_if(text, [](char character) {
        const auto code = static_cast<unsigned char>(character);
        return code < 0x20 || code == 0x7F;
    });
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
    text.resize(utf8PrefixLength(text, longestDescription));
    text.resize(text.find_last_not_of(' ') + 1);
    return text;
}

/// Empty when the field is missing or was left at its factory text.
std::string field(const std::string& file) {
    const std::string text = cleaned(contents(file));
    const bool isPlaceholder = std::find(std::begin(placeholders), std::end(placeholders),
                                         lowercased(text)) != std::end(placeholders);
    return isPlaceholder ? std::string() : text;
}

std::string readModelDescription(const std::string& root) {
    const std::string firmware = root + "/sys/class/dmi/id/";
    const std::string name = field(firmware + "product_name");
    // Some makers put a type number where the name belongs, and the name in the version field.
    std::string version = field(firmware + "product_version");
    if (name.find(' ') == std::string::npos && version.find(' ') != std::string::npos) {
        return version;
    }
    for (const std::string& candidate :
         {name, field(root + "/proc/device-tree/model"), field(firmware + "sys_vendor")}) {
        if (!candidate.empty()) {
            return candidate;
        }
    }
    return "Linux";
}

/// The value of a line KEY=value of os-release, without the quotes that a shell would take away.
std::string releaseValue(std::string_view text, std::string_view key) {
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (!line.starts_with(key) || !line.substr(key.size()).starts_with('=')) {
            continue;
        }
        std::string value = cleaned(line.substr(key.size() + 1));
        std::erase_if(value, [](char character) { return character == '"' || character == '\''; });
        return value;
    }
    return {};
}

std::string readSystemVersion(const std::string& root) {
    for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
        if (std::string version = releaseValue(contents(root + file), "VERSION_ID"); !version.empty()) {
            return version;
        }
    }
    // Distributions without versions: the kernel's.
    return cleaned(contents(root + "/proc/sys/kernel/osrelease"));
}

} // namespace

LinuxDevice::LinuxDevice() : LinuxDevice("") {}

LinuxDevice::LinuxDevice(const std::string& rootFolder)
    : modelDescription_(readModelDescription(rootFolder))
    , systemVersion_(readSystemVersion(rootFolder)) {}

} // namespace teralune
