#pragma once

#include "Benchmarks/InterleavedRatio.h"
#include "Platform/Http/HttpHeaders.h"

#include <cstddef>
#include <string>
#include <vector>

namespace teralune::benchmarks {

/// libcurl's multi interface alone, on the calling thread: one handle for each connection, prepared once and
/// used again as soon as it is free. The least that the same requests can cost.
class BareClient {
public:
    /// Sends the headers given.
    BareClient(std::string url, const HttpHeaders& headers, std::size_t connections);
    ~BareClient();
    BareClient(const BareClient&) = delete;
    BareClient& operator=(const BareClient&) = delete;

    Duration run(std::size_t requests, std::size_t atOnce);

private:
    struct Handle {
        void* easy;
        std::string body;
    };

    static std::size_t append(char* data, std::size_t size, std::size_t count, void* body);
    static void check(void* easy, int code);

    const std::string url_;
    void* const multi_;
    void* headers_ = nullptr;
    std::vector<Handle> handles_;
};

} // namespace teralune::benchmarks
