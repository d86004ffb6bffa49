#pragma once

#include "Platform/Http/HttpTransport.h"

#include <chrono>
#include <cstddef>
#include <memory>

namespace teralune {

class CurlEngine;

/// The transport on libcurl: one thread, one multi handle, and a first-in first-out queue per host in front
/// of it. Its destructor ends every transfer without completing it further and joins in well under 50 ms,
/// whatever is in flight, a stuck name lookup included.
class CurlTransport final : public HttpTransport {
public:
    struct Limits {
        std::size_t transfersPerHost = 6;
        std::size_t transfers = 32;
        std::size_t redirects = 5;
        std::size_t headerBytes = 64UL * 1024;
        std::size_t bodyBytes = 256UL * 1024 * 1024; ///< decoded
        std::chrono::milliseconds connectTimeout{10'000};
        std::chrono::seconds idleTimeout{60};
        /// For a whole exchange of the control lane, since everyone waits for its end.
        std::chrono::milliseconds controlTimeout{30'000};
    };

    CurlTransport();
    explicit CurlTransport(Limits limits);
    ~CurlTransport() override;

    [[nodiscard]] std::unique_ptr<Transfer> send(URLRequest request, TransferLane lane,
                                                 Completion completion) override;

private:
    std::shared_ptr<CurlEngine> engine_;
};

} // namespace teralune
