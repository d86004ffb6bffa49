#include "Platform/Http/CachePolicy.h"
#include "Platform/Http/CookieStorage.h"
#include "Platform/Http/HeaderSafety.h"
#include "Platform/Http/HttpError.h"
#include "Platform/Http/MultipartFormData.h"
#include "Platform/Http/ParameterEncoding.h"
#include "Platform/Http/Redirect.h"
#include "Platform/Http/ResponseSerialization.h"
#include "Platform/Http/ResponseValidation.h"
#include "Platform/Http/Url.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

const std::string& bodyOf(const URLRequest& request) {
    return *std::get<std::shared_ptr<const std::string>>(request.body);
}

TEST(ParameterEncoding, puts_sorted_and_escaped_parameters_where_the_method_wants_them) {
    const HttpParameters parameters{{"b", "x y+z&=/?~"}, {"a[]", "\xC3\xA4:#@!$'()*,;"}, {"c", "\xFF"}};
    const std::string form =
        "a%5B%5D=%C3%A4%3A%23%40%21%24%27%28%29%2A%2C%3B&b=x%20y%2Bz%26%3D/?~&c=%EF%BF%BD";
    struct Case {
        const char* url;
        HttpMethod method;
        std::string expected;
    };
    const Case cases[] = {
        {"http://h/p", HttpMethod::get, "http://h/p?" + form},
        {"http://h/p?q=1", HttpMethod::del, "http://h/p?q=1&" + form},
        {"http://h/p?#top", HttpMethod::head, "http://h/p?" + form + "#top"},
        {"http://h/p#what?", HttpMethod::get, "http://h/p?" + form + "#what?"},
        {"", HttpMethod::get, ""},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(encode({test.url, test.method, {}, {}}, parameters).url, test.expected);
    }
    const URLRequest posted = encode({"http://h/p", HttpMethod::post, {}, {}}, parameters);
    EXPECT_EQ(bodyOf(posted), form);
    EXPECT_EQ(posted.headers.value("content-type"), "application/x-www-form-urlencoded; charset=utf-8");
    EXPECT_EQ(encode({"http://h/p", HttpMethod::post, {}, {}}, {}).body.index(), 0U);
}

TEST(Url, takes_apart_what_is_a_url_and_refuses_what_is_none) {
    const auto url = Url::parse("HTTPS://user@API.Example:8443/a/b?x=1#f");
    ASSERT_TRUE(url);
    EXPECT_EQ(url->scheme() + " " + url->host() + " " + url->path(), "https api.example /a/b");
    EXPECT_EQ(url->port(), 8443);
    EXPECT_EQ(Url::parse("http://h")->port(), 80);
    EXPECT_TRUE(Url::parse("https://h:443/")->hasSameOrigin(*Url::parse("https://H")));
    EXPECT_FALSE(Url::parse("https://h.evil.test/")->hasSameOrigin(*Url::parse("https://h")));
    EXPECT_FALSE(Url::parse("http://127.evil.test/")->isLoopback());
    for (const char* text : {"", "not a url", "/path", "http://", "http://h/a b", "http://h/\xC3\xA4",
                             "http://h:99999/", "http://h/\r\nX: y", "http://h/{x}", "mailto:a@b"}) {
        EXPECT_FALSE(Url::parse(text)) << text;
    }
}

TEST(ResponseValidation, weighs_status_and_content_type_against_the_accept_header) {
    struct Case {
        int status;
        const char* accept;
        const char* contentType;
        std::size_t bodySize;
        std::optional<ResponseValidationError> expected;
    };
    constexpr auto status = ResponseValidationError::unacceptableStatusCode;
    constexpr auto type = ResponseValidationError::unacceptableContentType;
    constexpr auto missing = ResponseValidationError::missingContentType;
    const Case cases[] = {
        {200, nullptr, nullptr, 9, {}},
        {299, nullptr, "a/b", 9, {}},
        {199, nullptr, "a/b", 9, status},
        {300, nullptr, "a/b", 9, status},
        {200, "application/json", "Application/JSON; charset=utf-8", 9, {}},
        {200, "application/json", "text/html", 9, type},
        {200, "application/json", nullptr, 9, missing},
        {200, "application/json", "nonsense", 9, missing},
        {204, "application/json", nullptr, 0, {}},
        {200, "text/*;q=0.5, image/png", "text/csv", 9, {}},
        {200, "text/*", "textual/csv", 9, type},
        {200, "*/*", nullptr, 9, {}},
        {200, "text/html;q=0, */*", "text/html", 9, type},
        {200, "*/*;q=0.1, text/html; level=1; q=0.000", "text/html", 9, type},
        {200, "text/html;q=0, */*", "text/plain", 9, {}},
        {200, "text/*;q=0, text/html", "text/html", 9, {}},
    };
    for (const Case& test : cases) {
        URLRequest request;
        HTTPURLResponse response{"", test.status, {}};
        if (test.accept) {
            request.headers.add("accept", test.accept);
        }
        if (test.contentType) {
            response.headers.add("Content-Type", test.contentType);
        }
        const auto error = validationError(request, response, test.bodySize);
        EXPECT_EQ(error ? error->code : 0, test.expected ? static_cast<std::int64_t>(*test.expected) : 0)
            << test.status << " " << (test.accept ? test.accept : "-");
    }
}

TEST(Redirect, keeps_the_method_and_the_headers_only_where_that_is_safe) {
    struct Case {
        int status;
        HttpMethod method;
        const char* location;
        const char* url; ///< empty: refused
        HttpMethod following;
        bool keepsCookie;
    };
    using enum HttpMethod;
    const Case cases[] = {
        {302, get, "/other?x=1", "https://h/other?x=1", get, true},
        {301, post, "next", "https://h/a/next", get, true},
        {303, put, "https://h:443/b", "https://h/b", get, true},
        {303, head, "/b", "https://h/b", head, true},
        {302, put, "/b", "https://h/b", put, true},
        {307, post, "/b", "https://h/b", post, true},
        {308, post, "https://other/b", "", post, false},
        {302, post, "https://other/b", "https://other/b", get, false},
        {307, get, "https://other/b", "https://other/b", get, false},
        {302, get, "//h.evil.test/b", "https://h.evil.test/b", get, false},
        {302, get, "https://h:444/b c", "https://h:444/b%20c", get, false},
        {302, get, "http://h/b", "", get, false},
        {302, get, "ftp://h/b", "", get, false},
        {302, get, "file:///etc/passwd", "", get, false},
        {302, get, "https://user:word@h/b", "", get, false},
        {302, get, "https://h:port/", "", get, false},
    };
    for (const Case& test : cases) {
        const URLRequest request{
            "https://h/a/b",
            test.method,
            {{"Cookie", "tq.token=t"}, {"X-Own", "1"}, {"Accept", "a/b"}, {"Content-Type", "c/d"}},
            test.method == get ? URLRequest::Body() : std::make_shared<const std::string>("body")};
        const HTTPURLResponse response{request.url, test.status, {{"location", test.location}}};
        ASSERT_TRUE(isRedirect(response));
        const auto following = followingRequest(request, response);
        ASSERT_EQ(following.succeeded(), *test.url != '\0') << test.location;
        if (!following) {
            continue;
        }
        const URLRequest& next = following.value();
        EXPECT_EQ(Url::parse(next.url)->path(), Url::parse(test.url)->path());
        EXPECT_TRUE(Url::parse(next.url)->hasSameOrigin(*Url::parse(test.url))) << next.url;
        EXPECT_EQ(next.method, test.following) << test.location;
        EXPECT_EQ(next.headers.contains("Cookie"), test.keepsCookie) << test.location;
        EXPECT_EQ(next.headers.contains("X-Own"), test.keepsCookie) << test.location;
        EXPECT_TRUE(next.headers.contains("Accept"));
        EXPECT_EQ(next.headers.contains("Content-Type"), test.following == test.method);
        EXPECT_EQ(next.body.index() != 0, test.method != get && test.following == test.method)
            << test.location;
    }
    EXPECT_FALSE(isRedirect({"", 304, {{"Location", "/"}}}));
    EXPECT_FALSE(isRedirect({"", 302, {}}));
}

TEST(CachePolicy, stores_what_a_private_cache_would) {
    struct Case {
        HttpMethod method;
        int status;
        HttpHeaders request;
        HttpHeaders response;
        std::size_t size;
        bool expected;
    };
    using enum HttpMethod;
    const Case cases[] = {
        {get, 200, {}, {}, 10, true},
        {get, 200, {}, {{"Cache-Control", "no-cache, max-age=0"}}, 10, true},
        {get, 200, {}, {{"Cache-Control", "private, No-Store"}}, 10, false},
        {get, 200, {{"Cache-Control", "no-store"}}, {}, 10, false},
        {get, 200, {}, {{"Vary", "Accept"}, {"Vary", "*"}}, 10, false},
        {get, 201, {}, {}, 10, false},
        {get, 201, {}, {{"Cache-Control", "max-age=60"}}, 10, true},
        {get, 206, {}, {{"Expires", "tomorrow"}}, 10, false},
        {get, 404, {}, {{"Cache-Control", "public"}}, 10, false},
        {post, 200, {}, {}, 10, false},
        {head, 200, {}, {}, 0, false},
        {get, 200, {}, {}, 1024 * 1024, true},
        {get, 200, {}, {}, 1024 * 1024 + 1, false},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(wouldBeStoredInCache({"http://h/", test.method, test.request, {}},
                                       {"http://h/", test.status, test.response}, test.size),
                  test.expected)
            << test.status << " " << test.response.value("Cache-Control").value_or("-");
    }
}

TEST(HeaderSafety, refuses_whatever_could_end_a_header_early) {
    const auto isSafe = [](std::string name, std::string value) {
        const URLRequest request{"http://h/", HttpMethod::get, {{std::move(name), std::move(value)}}, {}};
        const auto error = unsafeHeaderError(request);
        EXPECT_TRUE(!error || error->localizedDescription.find("secret") == std::string::npos);
        return !error;
    };
    EXPECT_TRUE(isSafe("Cookie", "a=b;tq.device=T\xC3\xA4\tx"));
    EXPECT_TRUE(isSafe("X-Empty", ""));
    for (const char control : {'\r', '\n', '\0', '\x7f', '\x1b'}) {
        EXPECT_FALSE(isSafe("Cookie", std::string("secret") + control + "X: y"));
        EXPECT_FALSE(isSafe(std::string("X") + control, "y"));
    }
    for (const char* name : {"", "Authorization ", "A:B", "\xC3\xA4"}) {
        EXPECT_FALSE(isSafe(name, "y")) << name;
    }
    const auto form = std::make_shared<MultipartFormData>();
    form->append({"image", "a.jpg", "image/jpeg\r\nX: y", std::string("bytes")});
    EXPECT_TRUE(unsafeHeaderError(
        {"http://h/", HttpMethod::post, {}, std::shared_ptr<const MultipartFormData>(form)}));
}

TEST(ResponseSerialization, reads_text_by_its_charset) {
    struct Case {
        const char* contentType;
        std::string bytes;
        std::string expected;
    };
    const Case cases[] = {
        {"text/plain; charset=UTF-8", "a\xC3\xA4\xFF", "a\xC3\xA4\xEF\xBF\xBD"},
        {"text/plain", "\xC3\xA4", "\xC3\xA4"},
        {"text/plain", "\xE4", "\xC3\xA4"},
        {"text/plain; charset=\"iso-8859-1\"", "\xC3\xA4", "\xC3\x83\xC2\xA4"},
        {"text/plain; charset=windows-1252", "\x80", "\xE2\x82\xAC"},
        {"text/plain; charset=utf-16le", std::string("a\0\xAC\x20", 4), "a\xE2\x82\xAC"},
        {"text/plain; charset=klingon", "\xC3\xA4", "\xC3\xA4"},
    };
    for (const Case& test : cases) {
        const DataResponse<void> response{{},
                                          HTTPURLResponse{"", 200, {{"Content-Type", test.contentType}}},
                                          std::make_shared<const std::string>(test.bytes),
                                          {}};
        EXPECT_EQ(text(response).value(), test.expected) << test.contentType;
    }
}

TEST(ResponseSerialization, reads_json_with_fragments_and_empty_bodies) {
    const auto parsed = [](int status, std::string body) {
        return json(
            {{}, HTTPURLResponse{"", status, {}}, std::make_shared<const std::string>(std::move(body)), {}});
    };
    EXPECT_EQ(parsed(200, "\xEF\xBB\xBF[1]").value(), boost::json::array{1});
    EXPECT_EQ(parsed(200, "null").value(), nullptr);
    EXPECT_EQ(parsed(204, "").value(), nullptr);
    EXPECT_EQ(parsed(200, "").error(),
              responseValidationError(ResponseValidationError::inputDataNilOrZeroLength));
    EXPECT_EQ(parsed(200, "{").error(),
              responseValidationError(ResponseValidationError::jsonSerializationFailed));
}

TEST(CookieStorage, keeps_cookies_by_domain_path_and_scheme) {
    CookieStorage storage;
    storage.set({"host", "1", "h.test", "/", true, false});
    storage.set({"domain", "2", "h.test", "/", false, false});
    storage.set({"deep", "3", "h.test", "/a", true, false});
    storage.set({"secure", "4", "h.test", "/", true, true});
    storage.set({"host", "5", "H.test", "/", true, false});
    const auto names = [&storage](const char* url) {
        std::string joined;
        for (const auto& cookie : storage.cookies(url)) {
            joined += cookie.name + "=" + cookie.value + " ";
        }
        return joined;
    };
    EXPECT_EQ(names("https://h.test/a/b"), "deep=3 domain=2 secure=4 host=5 ");
    EXPECT_EQ(names("http://h.test/ab"), "domain=2 host=5 ");
    EXPECT_EQ(names("http://sub.h.test/"), "domain=2 ");
    EXPECT_EQ(names("http://evilh.test/"), "");
    storage.removeCookies("http://h.test/a");
    EXPECT_EQ(names("https://h.test/a"), "secure=4 ");
}

} // namespace
} // namespace teralune
