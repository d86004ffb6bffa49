#pragma once

#include "Platform/Http/CurlTransport.h"

#include <array>

namespace teralune {

class CurlExchange;
class CurlWatch;

/// An easy handle of libcurl with the options set that all requests share. It keeps them from one request to
/// the next, since setting them anew costs as much as the rest of a small request. Used by the engine's
/// thread alone.
class CurlHandle {
public:
    CurlHandle(const CurlTransport::Limits& limits, CurlWatch& watch);
    ~CurlHandle();
    CurlHandle(const CurlHandle&) = delete;
    CurlHandle& operator=(const CurlHandle&) = delete;

    /// Null when there was no memory for it.
    void* easy() const { return easy_; }
    /// The engine's own words after a failure.
    const char* words() const { return words_.data(); }

    /// What the engine has attached to the handle.
    void setOwner(void* owner) { owner_ = owner; }
    void* owner() const { return owner_; }
    /// The handle to which an easy handle of libcurl belongs.
    static CurlHandle& of(void* easy);

    /// Has the reply delivered to an exchange, which outlives the transfer.
    void attach(CurlExchange& exchange) { exchange_ = &exchange; }
    /// To be called before an option is set that not every request sets: the handle then goes back to the
    /// shared options once it is released.
    void markSpecial() { isSpecial_ = true; }
    /// Lets go of the exchange and of the special options.
    void release();

    /// A proxy named in the environment has no business between a process and its own machine.
    enum class Proxy { fromEnvironment, none };
    void setProxy(Proxy proxy);

private:
    void setSharedOptions();
    template<auto take>
    static std::size_t onBytes(char* data, std::size_t size, std::size_t count, void* handle) noexcept;

    const CurlTransport::Limits& limits_;
    CurlWatch& watch_;
    void* const easy_;
    void* owner_ = nullptr;
    CurlExchange* exchange_ = nullptr;
    bool isSpecial_ = false;
    Proxy proxy_ = Proxy::fromEnvironment;
    std::array<char, 256> words_{};
};

} // namespace teralune
