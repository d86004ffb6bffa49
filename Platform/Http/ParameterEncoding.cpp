#include "Platform/Http/ParameterEncoding.h"

#include "Platform/Foundation/PercentEncoding.h"
#include "Platform/Foundation/Utf8.h"

namespace teralune {

namespace {

std::string escaped(std::string_view text) {
    static const CharacterSet allowed = CharacterSet::urlQueryAllowed().without(":@!$&'()*+,;=");
    if (auto result = addingPercentEncoding(text, allowed)) {
        return *std::move(result);
    }
    return addingPercentEncoding(replacingInvalidUtf8(text), allowed).value();
}

bool encodesInQuery(HttpMethod method) {
    return method == HttpMethod::get || method == HttpMethod::head || method == HttpMethod::del;
}

void appendQuery(std::string& url, std::string_view query) {
    const std::size_t fragment = std::min(url.find('#'), url.size());
    const std::size_t question = url.find('?');
    std::string addition(question < fragment ? (question + 1 == fragment ? "" : "&") : "?");
    url.insert(fragment, addition.append(query));
}

} // namespace

std::string formEncoded(const HttpParameters& parameters) {
    std::string form;
    for (const auto& [key, value] : parameters) {
        form.append(form.empty() ? "" : "&").append(escaped(key)).append("=").append(escaped(value));
    }
    return form;
}

URLRequest encode(URLRequest request, const HttpParameters& parameters) {
    if (parameters.empty() || request.url.empty()) {
        return request;
    }
    if (encodesInQuery(request.method)) {
        appendQuery(request.url, formEncoded(parameters));
        return request;
    }
    if (!request.headers.contains("Content-Type")) {
        request.headers.set("Content-Type", "application/x-www-form-urlencoded; charset=utf-8");
    }
    request.body = std::make_shared<const std::string>(formEncoded(parameters));
    return request;
}

} // namespace teralune
