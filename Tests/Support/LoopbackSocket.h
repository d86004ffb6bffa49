#pragma once

namespace teralune {

/// A socket that listens at a free port of 127.0.0.1; ends the program where that is impossible.
int listenOnLoopback();
int portOf(int socket);

} // namespace teralune
