#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Result.h"

#include <cstdint>
#include <string>
#include <vector>

namespace teralune {

class Database;

/// Puts tags on one stored note and takes them off. Used inside a performAndWait() block and for its duration
/// only.
class NotebookTagLinks {
public:
    /// What became of each tag that was to be put on.
    struct Outcome {
        struct Failure {
            std::string tag;
            Error error;
        };
        std::vector<std::string> borne; ///< those that the note bears now
        std::vector<Failure> failures;  ///< those that could not be looked up, and were left out
    };

    explicit NotebookTagLinks(Database& database) : database_(database) {}

    /// Shares a tag that exists and makes one that does not. A note that was deleted gets none. A look-up
    /// whose failure ends the transaction is the failure of the whole, and no failure of the tag.
    Result<void> add(std::int64_t entryID, const std::vector<std::string>& tags, Outcome& outcome);
    Result<void> remove(std::int64_t entryID, const std::vector<std::string>& tags);

private:
    Database& database_;
};

} // namespace teralune
