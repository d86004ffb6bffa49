#pragma once

#include "Platform/Foundation/Result.h"

#include <cstddef>
#include <filesystem>
#include <string_view>

namespace teralune {

/// Writes the bytes of an image, given in Base64 as the library hands them out, to a file; how many there
/// were.
Result<std::size_t> writeImage(std::string_view base64, const std::filesystem::path& file);

} // namespace teralune
