#pragma once

#include "SolverService/Http/Parameters.h"
#include "SolverService/Model/ServerModel.h"

#include <string>
#include <string_view>
#include <vector>

namespace teralune::service {

/// What clients report about their use, by the path they report it to. Used from any thread.
class UsageRecords {
public:
    explicit UsageRecords(ServerModel& model) : model_(model) {}

    void add(std::string_view path, const Parameters& items);

    /// The records of a path in the order in which they came in.
    std::vector<Parameters> records(std::string_view path);

private:
    ServerModel& model_;
};

} // namespace teralune::service
