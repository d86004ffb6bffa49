#include "SolverService/Images/ImageText.h"

#include "SolverService/Http/Parameters.h"

#include <cstdint>

namespace teralune::service {

namespace {

constexpr std::string_view pngSignature = "\x89PNG\r\n\x1A\n";
constexpr std::string_view jpegStart = "\xFF\xD8";
constexpr std::string_view keyword{"LaTeX\0", 6};

std::uint32_t bigEndian(std::string_view bytes) {
    std::uint32_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

/// The text of an iTXt chunk behind its keyword: two flags, language and translated keyword come first.
std::optional<std::string> internationalText(std::string_view data) {
    if (data.size() < 2 || data[0] != 0) {
        // A compressed text.
        return std::nullopt;
    }
    data.remove_prefix(2);
    for (int skipped = 0; skipped < 2; ++skipped) {
        const std::size_t end = data.find('\0');
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        data.remove_prefix(end + 1);
    }
    return std::string(data);
}

std::optional<std::string> textInPng(std::string_view image) {
    image.remove_prefix(pngSignature.size());
    while (image.size() >= 12) {
        const std::size_t length = bigEndian(image.substr(0, 4));
        if (length > image.size() - 12) {
            return std::nullopt;
        }
        const std::string_view type = image.substr(4, 4);
        std::string_view data = image.substr(8, length);
        if (data.starts_with(keyword) && (type == "tEXt" || type == "iTXt")) {
            data.remove_prefix(keyword.size());
            return type == "tEXt" ? std::optional(std::string(data)) : internationalText(data);
        }
        image.remove_prefix(length + 12);
    }
    return std::nullopt;
}

std::optional<std::string> textInJpeg(std::string_view image) {
    image.remove_prefix(jpegStart.size());
    while (image.size() >= 4 && image[0] == '\xFF') {
        const auto marker = static_cast<unsigned char>(image[1]);
        const std::size_t length = bigEndian(image.substr(2, 2));
        // The pixels begin at the start of scan; there are no more comments to be had behind it.
        if (marker == 0xDA || length < 2 || length > image.size() - 2) {
            return std::nullopt;
        }
        if (marker == 0xFE) {
            return std::string(image.substr(4, length - 2));
        }
        image.remove_prefix(length + 2);
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> latexInImage(std::string_view image) {
    std::optional<std::string> text;
    if (image.starts_with(pngSignature)) {
        text = textInPng(image);
    } else if (image.starts_with(jpegStart)) {
        text = textInJpeg(image);
    }
    return text && !text->empty() && isText(*text) ? text : std::nullopt;
}

} // namespace teralune::service
