#include "Hosts/CommandLine/ImageFile.h"

#include "Hosts/CommandLine/CommandError.h"

#include <cstdint>
#include <fstream>
#include <string>

namespace teralune {
namespace {

constexpr std::string_view base64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The padding, and anything else that is no digit, ends the text.
std::string bytesOf(std::string_view base64) {
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : base64) {
        const std::size_t digit = base64Digits.find(c);
        if (digit == std::string_view::npos)
            break;
        bits = (bits << 6U) | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>((bits >> static_cast<unsigned>(count)) & 0xFFU);
        }
    }
    return bytes;
}

} // namespace

Result<std::size_t> writeImage(std::string_view base64, const std::filesystem::path& file) {
    const std::string bytes = bytesOf(base64);
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream)
        return commandError("The image can't be written: " + file.string());
    return bytes.size();
}

} // namespace teralune
