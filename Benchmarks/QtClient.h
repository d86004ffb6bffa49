#pragma once

#include "Benchmarks/InterleavedRatio.h"
#include "Platform/Http/HttpHeaders.h"

#include <cstddef>
#include <memory>
#include <string>

namespace teralune::benchmarks {

/// The same requests through the application toolkit's own network client, on the calling thread. There is
/// one of it in a program at most.
class QtClient {
public:
    QtClient(const std::string& url, const HttpHeaders& headers);
    ~QtClient();
    QtClient(const QtClient&) = delete;
    QtClient& operator=(const QtClient&) = delete;

    Duration run(std::size_t requests, std::size_t atOnce);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace teralune::benchmarks
