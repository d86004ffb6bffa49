#pragma once

#include "Classes/Interfaces/NoteDataFinderType.h"
#include "Classes/Model/NoteFetchingStrategyType.h"

#include <memory>

namespace teralune {

class IApplication;

/// Looks into the notebook's cache and falls back to the host's strategy; stores nothing. The cache is read
/// on the calling thread.
class NoteDataFinder final : public NoteDataFinderType {
public:
    NoteDataFinder(IApplication& application, std::unique_ptr<NoteFetchingStrategyType> noteFetchingStrategy);

    void findData(const std::string& query, const std::string& noteQuery, ForceWeb forceWeb,
                  SolutionOrigin origin, OnSuccess onSuccess, OnFailure onFailure) override;

private:
    /// Whether an attempt to download was made because the cache had nothing, which decides what is said when
    /// it fails.
    enum class Reason { askedFor, fallbackFromOffline };

    void findOffline(const std::string& query, const std::string& noteQuery, SolutionOrigin origin,
                     OnSuccess onSuccess, OnFailure onFailure);
    void findOnline(const std::string& query, Reason reason, SolutionOrigin origin, OnSuccess onSuccess,
                    OnFailure onFailure);

    IApplication& application_;
    std::unique_ptr<NoteFetchingStrategyType> noteFetchingStrategy_;
};

} // namespace teralune
