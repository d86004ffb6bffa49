#include "Platform/Foundation/Base64.h"

#include <cstddef>
#include <cstdint>

namespace teralune {

std::string base64Encoded(std::string_view bytes) {
    static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t start = 0; start < bytes.size(); start += 3) {
        const std::string_view group = bytes.substr(start, 3);
        std::uint32_t bits = 0;
        for (std::size_t index = 0; index < 3; ++index)
            bits = bits << 8 | (index < group.size() ? static_cast<unsigned char>(group[index]) : 0U);
        for (std::size_t index = 0; index < 4; ++index)
            text.push_back(index <= group.size() ? digits[bits >> (18 - 6 * index) & 0x3F] : '=');
    }
    return text;
}

} // namespace teralune
