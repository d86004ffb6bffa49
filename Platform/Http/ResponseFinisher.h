#pragma once

#include "Platform/Foundation/UniqueFunction.h"
#include "Platform/Http/DataResponse.h"
#include "Platform/Http/HttpError.h"

#include <exception>

namespace teralune {

/// The last step of a request: told on the delegate queue how it ended, it maps the reply and returns the
/// handler's call, which the caller posts to the main queue. Called once.
using ResponseFinisher = UniqueFunction<UniqueFunction<void()>(DataResponse<void>)>;

/// For use in a catch block: the error of a request whose adapter, closure or mapper threw.
Error currentExceptionError();

/// A finisher that hands the handler what map, a Result<T>(const DataResponse<void>&), makes of a success; a
/// failure passes map by.
template<class T, class Map>
ResponseFinisher makeResponseFinisher(UniqueFunction<void(DataResponse<T>)> handler, Map map) {
    return [handler = std::move(handler), map](DataResponse<void> raw) mutable -> UniqueFunction<void()> {
        auto mapped = [&]() -> Result<T> {
            if (!raw.result) {
                return raw.result.error();
            }
            try {
                return map(raw);
            } catch (...) {
                return currentExceptionError();
            }
        }();
        DataResponse<T> response{std::move(raw.request), std::move(raw.response), std::move(raw.data),
                                 std::move(mapped)};
        return [handler = std::move(handler), response = std::move(response)]() mutable {
            handler(std::move(response));
        };
    };
}

} // namespace teralune
