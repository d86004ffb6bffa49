#include "Classes/Networking/Networking.h"

#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/SettingsPersistenceType.h"
#include "Classes/Networking/CookieValue.h"
#include "Platform/Device/Device.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Foundation/RegularExpression.h"
#include "Platform/Foundation/Utf8.h"
#include "Platform/Http/CookieStorage.h"

#include <algorithm>

namespace teralune {
namespace {

RegularExpression compiled(std::string_view pattern) {
    auto expression = RegularExpression::compile(pattern);
    if (!expression)
        fatalError("A pattern of the request pipeline does not compile");
    return *std::move(expression);
}

std::string_view orientationWord(std::int64_t orientation) {
    switch (orientation) {
    case 1:
    case 2:
        return "portrait";
    case 3:
    case 4:
        return "landscape";
    default:
        return "unknown";
    }
}

bool isAsciiSeparator(char character) {
    return (character >= '\t' && character <= '\r') || character == ' ' || character == ',' ||
           character == ';' || character == '=';
}

/// Each run of separators becomes one "_". Nearly every value of every request is ASCII, where no expression
/// is needed.
void appendWithoutSeparators(std::string& text, std::string_view value) {
    if (!isAscii(value)) {
        static const RegularExpression separators = compiled("[\\s,;=]+");
        text.append(separators.replacingMatches(value, "_"));
        return;
    }
    while (!value.empty()) {
        const auto separator = std::find_if(value.begin(), value.end(), isAsciiSeparator);
        text.append(value.begin(), separator);
        if (separator == value.end())
            return;
        text.push_back('_');
        value = {std::find_if_not(separator, value.end(), isAsciiSeparator), value.end()};
    }
}

void appendCookie(std::string& header, std::string_view name, std::string_view value) {
    header.append(header.empty() ? "" : ";").append(name).push_back('=');
    appendWithoutSeparators(header, value);
}

/// One value that no header can hold would keep every request from being sent.
void appendWhereSound(std::string& header, std::string_view name, const std::optional<std::string>& value) {
    if (value && canBeCookieValue(*value))
        appendCookie(header, name, *value);
}

} // namespace

std::string Networking::cookie(std::string_view name, std::string_view value) {
    std::string item;
    appendCookie(item, name, value);
    return item;
}

std::string Networking::standardCookies() const {
    const SettingsPersistenceType& persistence = application_.persistence();
    const Device& device = *application_.platform().device;
    std::string header;
    appendCookie(header, "tq.platform", "iOS");
    appendCookie(header, "tq.app",
                 application_.appName() + "/" + application_.appVersion() + "." + application_.buildNum());
    appendCookie(header, "tq.device", device.modelDescription());
    appendCookie(header, "tq.os", device.systemVersion());
    appendCookie(header, "tq.installation", persistence.installationID());
    appendCookie(header, "tq.orientation", orientationWord(application_.currentOrientation()));
    appendCookie(header, "tq2.decimal", std::to_string(persistence.numDecimalDisplay()));
    return header;
}

std::string Networking::identityCookies() const {
    std::string header = standardCookies();
    const std::lock_guard lock(playSessionMutex_);
    appendWhereSound(header, PlaySessionKey, playSession_);
    return header;
}

std::string Networking::getCookieString(IsLogout isLogout) const {
    std::string header = identityCookies();
    const SettingsPersistenceType& persistence = application_.persistence();
    appendWhereSound(header, tokenCookie,
                     isLogout.value ? persistence.logoutAccessToken() : persistence.accessToken());
    return header;
}

void Networking::addCookieTo(URLRequest& request, std::string_view key, std::string_view value) const {
    request.headers.add("Cookie", cookie(key, value));
}

void Networking::removeURLCookiesFrom(const URLRequest& request) const {
    application_.platform().cookieStorage->removeCookies(request.url);
}

void Networking::capturePlaySession(const HTTPURLResponse& response) {
    static const RegularExpression assignment = compiled("PLAY_SESSION=([^;]+);");
    const auto header = response.headers.value("Set-Cookie");
    if (!header || header->find(PlaySessionKey) == std::string::npos)
        return;
    // What follows the last semicolon can't match, and where it names the session over and over the pattern
    // would go through all of it for each time.
    auto match = assignment.firstMatch(std::string_view(*header).substr(0, header->rfind(';') + 1));
    if (!match || match->size() < 2 || !canBeCookieValue((*match)[1]))
        return;
    const std::lock_guard lock(playSessionMutex_);
    playSession_ = std::move((*match)[1]);
}

bool Networking::validateResponse(const HTTPURLResponse& response, const URLRequest& request) {
    capturePlaySession(response);
    if (response.statusCode >= 200 && response.statusCode <= 299)
        return true;
    const std::string failed = std::string(name(request.method)) + " " + request.url;
    application_.crashReporter().recordError(
        {std::string(NetworkingDomain),
         response.statusCode,
         "The server answered with status " + std::to_string(response.statusCode) + ".",
         {{"Request", failed}}});
    return false;
}

} // namespace teralune
