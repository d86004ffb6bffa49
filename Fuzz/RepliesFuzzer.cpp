// The replies with records: steps, users, tokens, recognition, suggestions. Every record is read, and what is
// logged of a reply is text.

#include "Classes/Networking/MobileResponse.h"
#include "Classes/Networking/OCRResponse.h"
#include "Classes/Networking/RefreshResponse.h"
#include "Classes/Networking/RequestResponse.h"
#include "Classes/Networking/ResponseBodySummary.h"
#include "Classes/Networking/StepsMetadataParse.h"
#include "Classes/Networking/Suggestion.h"
#include "Classes/Networking/UserData.h"
#include "Fuzz/Fuzzer.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Foundation/Utf8.h"

using namespace teralune;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view reply = fuzz::textOf(data, size);
    fuzz::require(isValidUtf8(responseBodySummary(reply)), "a summary of bytes is text");
    const auto steps = StepsMetadataParse::parse(reply);
    const auto parsed = parseJson(reply);
    fuzz::require(steps.has_value() == (parsed && parsed.value().is_object()), "steps are a JSON object");
    if (!parsed) {
        return 0;
    }
    const boost::json::value& value = parsed.value();
    fuzz::require(isValidUtf8(responseBodySummary(&value)), "a summary of JSON is text");
    // The parser rounds a number of many digits to one of the two nearest, so numbers alone may differ.
    fuzz::require(parseJson(serializeJson(value)).succeeded(), "what is written can be read");
    if (const boost::json::object* object = value.if_object()) {
        const UserData user = UserData::map(*object);
        fuzz::require(!user.firstName || isValidUtf8(*user.firstName), "a name is text");
        const auto suggestion = Suggestion::map(*object);
        fuzz::require(suggestion.has_value() ==
                          (object->contains("display") && object->contains("search") &&
                           object->at("display").is_string() && object->at("search").is_string()),
                      "a suggestion has its two texts");
        const OCRResponse recognised = OCRResponse::map(*object);
        fuzz::require(!recognised.latex || isValidUtf8(*recognised.latex), "a problem is text");
        const RefreshResponse refreshed = RefreshResponse::map(*object);
        const MobileResponse answered = MobileResponse::map(*object);
        fuzz::require(refreshed.alert == answered.alert, "a refusal reads the same everywhere");
        RequestResponse::map(*object);
    }
    return 0;
}
