#pragma once

#include "Platform/Http/CurlHeaderLines.h"
#include "Platform/Http/CurlTransport.h"
#include "Platform/Http/HttpTransport.h"
#include "Platform/Http/ReplyCollector.h"

#include <memory>
#include <optional>
#include <string_view>

namespace teralune {

class CurlHandle;

/// One request and its reply on an easy handle of libcurl, over all redirects. It outlives the handle's use:
/// the handle points into it. Made by the sender's thread, which does what can be done beforehand; used by
/// the engine's thread alone from then on.
class CurlExchange {
public:
    CurlExchange(const CurlTransport::Limits& limits, URLRequest request, TransferLane lane);
    CurlExchange(const CurlExchange&) = delete;
    CurlExchange& operator=(const CurlExchange&) = delete;

    /// Prepares a handle that has the shared options. An error means that nothing must be sent.
    std::optional<Error> prepare(CurlHandle& handle);

    /// Pieces of the reply; false when the exchange refuses to go on.
    bool addHeaderLine(std::string_view line) { return reply_.addHeaderLine(line); }
    bool addBody(std::string_view piece) { return reply_.addBody(piece); }

    enum class Next { follow, finished };
    /// Takes what the handle tells after its end with this CURLcode. follow: prepare a handle again, for the
    /// place the server redirected to.
    Next end(const CurlHandle& handle, int code);
    TransferOutcome takeOutcome() { return std::move(outcome_); }

    static TransferOutcome failed(Error error) { return {std::nullopt, {}, std::move(error)}; }

private:
    /// Looks at the request and writes its header; sets refusal_ when it must not be sent.
    void inspect();
    void takeApart(const std::string& url);
    std::optional<Error> setBody(CurlHandle& handle);
    std::optional<Error> setForm(CurlHandle& handle, const MultipartFormData& form);
    Error failure(const CurlHandle& handle, int code) const;

    using Resource = std::unique_ptr<void, void (*)(void*)>;

    const CurlTransport::Limits& limits_;
    URLRequest request_;
    const TransferLane lane_;
    bool isLoopback_ = false;
    std::optional<Error> refusal_;
    CurlHeaderLines headerLines_;
    Resource url_; ///< taken apart; null if there was no memory for it, libcurl then does it
    std::size_t redirects_ = 0;
    ReplyCollector reply_;
    TransferOutcome outcome_;
    Resource form_;
};

} // namespace teralune
