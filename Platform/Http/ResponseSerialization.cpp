#include "Platform/Http/ResponseSerialization.h"

#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Foundation/Utf8.h"
#include "Platform/Http/ContentType.h"
#include "Platform/Http/HttpError.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <memory>
#include <optional>
#include <string_view>

namespace teralune {

namespace {

/// No value for a charset that ICU does not know either.
std::optional<std::string> decoded(const std::string& bytes, const std::string& charset) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open(charset.c_str(), &status),
                                                                       &ucnv_close);
    if (U_FAILURE(status)) {
        return std::nullopt;
    }
    const icu::UnicodeString characters(bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                        converter.get(), status);
    if (U_FAILURE(status)) {
        return std::nullopt;
    }
    std::string text;
    characters.toUTF8String(text);
    return text;
}

std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

} // namespace

Result<std::string> text(const DataResponse<void>& response) {
    const std::string& bytes = *response.data;
    const auto named = response.response ? charset(*response.response) : std::nullopt;
    if (named && *named != "utf-8") {
        if (auto characters = decoded(bytes, *named)) {
            return *std::move(characters);
        }
    }
    if (isValidUtf8(bytes)) {
        return bytes;
    }
    return named == "utf-8" ? replacingInvalidUtf8(bytes) : decodeLatin1(bytes);
}

Result<boost::json::value> json(const DataResponse<void>& response) {
    const int status = response.statusCode();
    if (response.data->empty()) {
        if (status == 204 || status == 205) {
            return boost::json::value(nullptr);
        }
        return responseValidationError(ResponseValidationError::inputDataNilOrZeroLength);
    }
    auto value = parseJson(withoutByteOrderMark(*response.data));
    if (!value) {
        return responseValidationError(ResponseValidationError::jsonSerializationFailed,
                                       value.error().localizedDescription);
    }
    return value;
}

Result<boost::json::object> jsonObject(const DataResponse<void>& response) {
    auto value = json(response);
    if (!value) {
        return value.error();
    }
    if (boost::json::object* object = value.value().if_object()) {
        return std::move(*object);
    }
    return responseValidationError(ResponseValidationError::objectMappingFailed);
}

} // namespace teralune
