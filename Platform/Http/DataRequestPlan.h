#pragma once

#include "Platform/Http/DataRequest.h"
#include "Platform/Http/RunningRequest.h"

namespace teralune {

/// What a request in preparation holds until it is sent.
struct DataRequest::Plan {
    std::shared_ptr<Session> session;
    RunningRequest::Plan running;
};

} // namespace teralune
