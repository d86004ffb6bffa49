#pragma once

#include "Platform/Foundation/Error.h"

#include <string>

namespace teralune {

/// Whether a request failed only because its reply, which arrived with a good status, is not what was to be
/// read from it.
bool isUnreadableReply(const Error& error);

/// Whether a body is an answer: servers write "null", or nothing, for none.
bool isAnswer(const std::string& body);

} // namespace teralune
