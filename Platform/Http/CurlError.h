#pragma once

#include "Platform/Foundation/Error.h"

#include <string_view>

namespace teralune {

/// The transport error for a result code of libcurl (a CURLcode other than CURLE_OK). The code and the
/// engine's own words go along as detail. The system's error number of the last connect, 0 without one, tells
/// a server that does not answer from a machine without a network.
Error errorForCurlCode(int code, int systemError, std::string_view words);

} // namespace teralune
