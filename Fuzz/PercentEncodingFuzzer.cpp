// Percent-encoding: what is encoded is decoded again, is ASCII, and holds no character of the excluded ones.

#include "Fuzz/Fuzzer.h"
#include "Platform/Foundation/PercentEncoding.h"
#include "Platform/Foundation/Utf8.h"

#include <algorithm>

using namespace teralune;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    const bool isText = isValidUtf8(text);
    for (const CharacterSet& allowed : {CharacterSet::urlQueryAllowed(), CharacterSet::urlPathAllowed(),
                                        CharacterSet::urlQueryAllowed().without(":#[]@!$&'()*+,;=")}) {
        const auto encoded = addingPercentEncoding(text, allowed);
        fuzz::require(encoded.has_value() == isText, "every text is encoded, and nothing else");
        if (encoded) {
            fuzz::require(std::all_of(encoded->begin(), encoded->end(),
                                      [&](char one) { return one == '%' || allowed.contains(one); }),
                          "nothing that is not allowed is left");
            fuzz::require(removingPercentEncoding(*encoded) == text, "the text comes back");
        }
    }
    const auto decoded = removingPercentEncoding(text);
    fuzz::require(!decoded || isValidUtf8(*decoded), "what is decoded is text");
    return 0;
}
