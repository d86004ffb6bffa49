// What is uploaded to the stand-in service: forms and images are read within their bounds.

#include "Fuzz/Fuzzer.h"
#include "SolverService/Http/Multipart.h"
#include "SolverService/Images/ImageText.h"

using namespace teralune;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    service::ReceivedRequest request;
    request.headers = {{"Content-Type", "multipart/form-data; boundary=b"}};
    request.body = fuzz::textOf(data, size);
    if (const auto parts = service::formParts(request)) {
        std::size_t taken = 0;
        for (const auto& part : *parts) {
            taken += part.content.size();
        }
        fuzz::require(taken <= size, "no bytes come from nothing");
    }
    const auto latex = service::latexInImage(request.body);
    fuzz::require(!latex || latex->size() <= size, "no text comes from nothing");
    return 0;
}
