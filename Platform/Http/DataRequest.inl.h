#pragma once

#include "Platform/Http/DataRequest.h"
#include "Platform/Http/ResponseSerialization.h"

namespace teralune {

template<class T>
RequestHandle DataRequest::responseString(T (*mapper)(std::string text), Handler<T> handler) && {
    return std::move(*this).send(
        makeResponseFinisher<T>(std::move(handler), [mapper](const DataResponse<void>& raw) -> Result<T> {
            auto read = text(raw);
            if (!read) {
                return read.error();
            }
            return mapper(std::move(read).value());
        }));
}

template<class T>
RequestHandle DataRequest::responseObject(std::optional<T> (*mapper)(const boost::json::object&),
                                          Handler<T> handler) && {
    return std::move(*this).send(
        makeResponseFinisher<T>(std::move(handler), [mapper](const DataResponse<void>& raw) -> Result<T> {
            const auto object = jsonObject(raw);
            if (!object) {
                return object.error();
            }
            if (auto record = mapper(object.value())) {
                return *std::move(record);
            }
            return responseValidationError(ResponseValidationError::objectMappingFailed);
        }));
}

} // namespace teralune
