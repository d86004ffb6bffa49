#pragma once

#include "Platform/Http/RequestAdapter.h"
#include "Platform/Http/RequestRetrier.h"
#include "Platform/Http/SessionManager.h"
#include "Platform/PlatformServices.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>

namespace teralune {

class AdapterFake final : public RequestAdapter {
public:
    std::function<Result<URLRequest>(URLRequest)> onAdapt = [](URLRequest request) { return request; };
    Result<URLRequest> adapt(URLRequest request) override { return onAdapt(std::move(request)); }
};

class RetrierFake final : public RequestRetrier {
public:
    std::function<void(const SessionTask&, const Error&, RetryCompletion)> onShould;
    void should(SessionManager&, const SessionTask& request, const Error& error,
                RetryCompletion completion) override {
        onShould(request, error, std::move(completion));
    }
};

inline constexpr std::int64_t cancelledCode = static_cast<std::int64_t>(HttpTransportError::cancelled);

/// 0 for a success.
template<class T>
std::int64_t errorCode(const DataResponse<T>& response) {
    return response.result ? 0 : response.result.error().code;
}

} // namespace teralune
