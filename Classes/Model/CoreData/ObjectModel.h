#pragma once

#include "Platform/Foundation/Result.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace teralune {

class Database;

/// The store's schema as a ladder: a folder with one script per version ("Version1.sql", "Version2.sql", …),
/// each of which makes its version out of the one before. A value.
class ObjectModel {
public:
    /// The version that this library's queries are written for.
    static constexpr std::int64_t currentVersion = 3;

    /// Fails when a step up to the current version is missing, unreadable or empty.
    static Result<ObjectModel> load(const std::filesystem::path& folder);

    /// Brings a store to the current version, an empty file included, in one transaction: a store is at its
    /// old version or at the new one, never between. Fails for a newer store and for a foreign file, which
    /// then are as they were. A store that is current is only read.
    Result<void> migrate(Database& store) const;

    /// Makes this version out of the one before, inside the caller's transaction.
    Result<void> takeStep(Database& store, std::int64_t version) const;

private:
    explicit ObjectModel(std::vector<std::string> scripts);
    std::vector<std::string> scripts_;
};

} // namespace teralune
