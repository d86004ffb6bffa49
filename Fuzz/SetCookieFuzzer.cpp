// The session cookie of a reply: whatever the server sets, no request's Cookie header gets a control
// character, a further cookie, or a second line from it.

#include "Classes/Networking/Networking.h"
#include "Fuzz/Fuzzer.h"
#include "Tests/Support/FakeApplication.h"

#include <algorithm>

using namespace teralune;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FakeApplication application;
    Networking networking(application, application.constants);
    const auto cookiesSent = [&networking] {
        URLRequest request;
        request.url = "https://api.test/";
        const Result<URLRequest> adapted = networking.adapt(std::move(request));
        fuzz::require(adapted.succeeded(), "no cookie keeps a request from being sent");
        return adapted.value().headers.value("Cookie").value_or("");
    };
    static const auto cookieCount = [](const std::string& cookies) {
        return std::count(cookies.begin(), cookies.end(), ';');
    };
    const auto fixedCookies = cookieCount(cookiesSent());
    HTTPURLResponse response;
    response.statusCode = 200;
    response.headers.add("Set-Cookie", std::string(fuzz::textOf(data, size)));
    networking.validateResponse(response, URLRequest{});
    const std::string cookies = cookiesSent();
    fuzz::require(std::none_of(cookies.begin(), cookies.end(),
                               [](char one) { return one == '\x7f' || (one >= 0 && one < ' '); }),
                  "a header holds no control character");
    fuzz::require(cookieCount(cookies) <= fixedCookies + 1, "one assignment gives one cookie");
    return 0;
}
