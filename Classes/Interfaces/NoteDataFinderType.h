#pragma once

#include "Classes/Interfaces/SolutionOrigin.h"
#include "Platform/Foundation/UniqueFunction.h"

#include <optional>
#include <string>

namespace teralune {

/// Whether a note's solution is taken from the server even where it is cached.
struct ForceWeb {
    bool value = false;
};

/// Finds the solution of a saved note: from the cache where there is one, from the server otherwise.
class NoteDataFinderType {
public:
    using OnSuccess = UniqueFunction<void(std::string steps, std::optional<std::string> topic)>;
    /// A text to show, in the interface language.
    using OnFailure = UniqueFunction<void(std::string message)>;

    virtual ~NoteDataFinderType() = default;

    /// Exactly one of the two is called: in the call itself when the cache answers, otherwise where the
    /// fetching strategy calls back. noteQuery is the query under which the note is stored.
    virtual void findData(const std::string& query, const std::string& noteQuery, ForceWeb forceWeb,
                          SolutionOrigin origin, OnSuccess onSuccess, OnFailure onFailure) = 0;
};

} // namespace teralune
