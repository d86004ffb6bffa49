#pragma once

#include "Platform/Http/CurlTransport.h"
#include "Platform/Http/HttpTransport.h"
#include "Platform/Http/ReplyCollector.h"

#include <array>
#include <memory>
#include <optional>
#include <string>

namespace teralune {

/// One request and its reply on an easy handle of libcurl, over all redirects. It outlives the handle's use:
/// the handle points into it. Used by the engine's thread alone.
class CurlExchange {
public:
    CurlExchange(const CurlTransport::Limits& limits, URLRequest request, TransferLane lane);
    CurlExchange(const CurlExchange&) = delete;
    CurlExchange& operator=(const CurlExchange&) = delete;

    /// Prepares a handle that is fresh or reset. An error means that nothing must be sent.
    std::optional<Error> prepare(void* easy);

    enum class Next { follow, finished };
    /// Takes what the handle tells after its end with this CURLcode. follow: prepare a handle again, for the
    /// place the server redirected to.
    Next end(void* easy, int code);
    TransferOutcome takeOutcome() { return std::move(outcome_); }

    static TransferOutcome failed(Error error) { return {std::nullopt, {}, std::move(error)}; }

private:
    /// libcurl's callback for a piece of the reply.
    template<bool (ReplyCollector::*take)(std::string_view)>
    static std::size_t onBytes(char* data, std::size_t size, std::size_t count, void* exchange) noexcept;

    void setConnection(void* easy, bool isLoopback);
    void setHeaders(void* easy);
    std::optional<Error> setBody(void* easy);
    std::optional<Error> setForm(void* easy, const MultipartFormData& form);
    Error failure(void* easy, int code) const;

    using Resource = std::unique_ptr<void, void (*)(void*)>;

    const CurlTransport::Limits& limits_;
    URLRequest request_;
    const TransferLane lane_;
    std::size_t redirects_ = 0;
    ReplyCollector reply_;
    TransferOutcome outcome_;
    std::array<char, 256> words_{}; ///< the engine's own, after a failure
    Resource headerList_;
    Resource form_;
};

} // namespace teralune
