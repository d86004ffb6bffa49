#pragma once

#include <string>

namespace teralune::benchmarks {

struct NotebookVariation {
    /// One note of a hundred was changed on the server.
    bool everyHundredthIsChanged = false;
};

/// The problem of a note by its number; note 0 is the newest.
std::string problemOf(int note);
/// The server's reply with that many notes of three tags each, newest first, as bytes.
std::string notebookBytes(int noteCount, NotebookVariation variation);

} // namespace teralune::benchmarks
