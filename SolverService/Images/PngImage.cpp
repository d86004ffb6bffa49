#include "SolverService/Images/PngImage.h"

#include <algorithm>
#include <array>

namespace teralune::service {

namespace {

constexpr std::size_t largestStoredBlock = 65'535;

std::string bigEndian(std::uint32_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<char>(number >> shift & 0xFF));
    }
    return bytes;
}

std::array<std::uint32_t, 256> makeChecksumTable() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t index = 0; index < table.size(); ++index) {
        std::uint32_t value = index;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1) != 0 ? 0xEDB88320 ^ (value >> 1) : value >> 1;
        }
        table[index] = value;
    }
    return table;
}

std::uint32_t chunkChecksum(std::string_view bytes) {
    static const std::array<std::uint32_t, 256> table = makeChecksumTable();
    std::uint32_t checksum = 0xFFFFFFFF;
    for (const char byte : bytes) {
        checksum = table[(checksum ^ static_cast<unsigned char>(byte)) & 0xFF] ^ (checksum >> 8);
    }
    return checksum ^ 0xFFFFFFFF;
}

std::string chunk(std::string_view type, std::string_view data) {
    std::string checked(type);
    checked += data;
    return bigEndian(static_cast<std::uint32_t>(data.size())) + checked + bigEndian(chunkChecksum(checked));
}

/// A zlib stream of stored blocks: these images are not worth compressing.
std::string stored(std::string_view data) {
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (const char byte : data) {
        low = (low + static_cast<unsigned char>(byte)) % 65'521;
        high = (high + low) % 65'521;
    }
    std::string stream = "\x78\x01";
    while (!data.empty()) {
        const std::string_view block = data.substr(0, largestStoredBlock);
        data.remove_prefix(block.size());
        const auto size = static_cast<std::uint32_t>(block.size());
        stream.push_back(data.empty() ? '\1' : '\0');
        for (const std::uint32_t number : {size, ~size}) {
            stream.push_back(static_cast<char>(number & 0xFF));
            stream.push_back(static_cast<char>(number >> 8 & 0xFF));
        }
        stream += block;
    }
    return stream + bigEndian(high << 16 | low);
}

} // namespace

std::string pngOf(std::string_view text, std::uint32_t width, std::uint32_t height) {
    std::string rows;
    rows.reserve((width + 1) * static_cast<std::size_t>(height));
    for (std::uint32_t y = 0; y < height; ++y) {
        rows.push_back('\0');
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::size_t letter = text.empty() ? 0 : static_cast<std::size_t>(x) * text.size() / width;
            const auto shade = text.empty() ? 0U : static_cast<unsigned char>(text[letter]) * 2U;
            rows.push_back(static_cast<char>(std::min(255U, shade + y * 32U / height)));
        }
    }
    const std::string header = bigEndian(width) + bigEndian(height) + std::string("\x08\0\0\0\0", 5);
    std::string label("LaTeX\0\0\0\0\0", 10);
    label += text;
    return std::string("\x89PNG\r\n\x1A\n") + chunk("IHDR", header) + chunk("iTXt", label) +
           chunk("IDAT", stored(rows)) + chunk("IEND", {});
}

} // namespace teralune::service
