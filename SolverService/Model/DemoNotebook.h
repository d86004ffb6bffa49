#pragma once

#include "Platform/Foundation/Result.h"
#include "SolverService/Model/NoteRecord.h"

#include <string>
#include <vector>

namespace teralune::service {

constexpr const char* demoEmail = "demo@teralune.example";
constexpr const char* demoPassword = "teralune";

/// The notebook that the demo account starts with. Every problem that is not a graph can be solved, so
/// a client that caches steps gets through all of it. Times lie before now, the first note's the latest.
std::vector<NoteRecord> demoNotes(std::int64_t now);

/// The problems of a text file, one a line; blank lines are passed over. Fails when it can't be read.
Result<std::vector<NoteRecord>> notesFromFile(const std::string& file);

} // namespace teralune::service
