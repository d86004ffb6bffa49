#include "Classes/Networking/Networking.h"

#include "Classes/Interfaces/CrashReporterType.h"
#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/ITeraluneConstants.h"
#include "Classes/Support/Language.h"
#include "Platform/Foundation/Printer.h"

#include <algorithm>
#include <array>

namespace teralune {
namespace {

/// Parameters whose values open an account, so that they may not stand in a log.
constexpr std::array<std::string_view, 6> secretParameters = {
    "password", "password2", "currentPassword", "code", "code_verifier", "facebookObj",
};

std::string loggedText(const HttpParameters& parameters) {
    std::string text;
    for (const auto& [key, value] : parameters) {
        const bool isSecret =
            std::find(secretParameters.begin(), secretParameters.end(), key) != secretParameters.end();
        text.append(text.empty() ? "" : ", ").append(key).append("=").append(isSecret ? "•••" : value);
    }
    return text;
}

} // namespace

Networking::Networking(IApplication& application, const ITeraluneConstants& constants)
    : application_(application)
    , constants_(constants) {
    const PlatformServices& platform = application.platform();
    const SessionManager::Configuration configuration{SessionManager::defaultHTTPHeaders(platform)};
    for (auto* manager :
         {&sessionManagerWithPrivateToken_, &sessionManagerWithAnyToken_, &sessionManagerWithoutToken_}) {
        *manager = std::make_unique<SessionManager>(platform, configuration);
        (*manager)->setAdapter(this);
        (*manager)->setRetrier(this);
        SessionDelegate& delegate = (*manager)->delegate();
        delegate.dataTaskWillCacheResponse = [this](const SessionTask&, CachedURLResponse proposed) {
            return dataTaskWillCacheResponse(std::move(proposed));
        };
        delegate.taskDidComplete = [this](const SessionTask& task, const std::optional<Error>& error) {
            taskDidComplete(task, error);
        };
    }
}

Networking::~Networking() {
    // A request of one session manager that is refused while another ends would look for that other one to
    // refresh the token, so none may ask any more before the first one goes.
    for (auto* manager :
         {&sessionManagerWithPrivateToken_, &sessionManagerWithAnyToken_, &sessionManagerWithoutToken_})
        (*manager)->setRetrier(nullptr);
    sessionManagerWithPrivateToken_.reset();
    sessionManagerWithAnyToken_.reset();
    sessionManagerWithoutToken_.reset();
}

std::string Networking::fullHostName() const {
    return (constants_.httpsProtocol() ? "https://" : "http://") + constants_.apiHost();
}

std::string Networking::fullOCRHostName() const {
    return (constants_.httpsProtocol() ? "https://" : "http://") + constants_.ocrHost();
}

DataRequest Networking::makeRequest(const std::string& url, HttpMethod method,
                                    const HttpParameters& parameters, SessionManager& manager) {
    DataRequest request = manager.request(url, method, parameters);
    const std::string& absoluteURL = request.absoluteURL();
    log("Request to: %@, with parameters: %@",
        {absoluteURL.empty() ? "(empty URL)" : absoluteURL, loggedText(parameters)});
    return std::move(request).validate();
}

DataRequest Networking::post(std::string_view path, const HttpParameters& parameters,
                             SessionManager& manager) {
    return makeRequest(fullHostName().append(path), HttpMethod::post, parameters, manager);
}

Result<URLRequest> Networking::adapt(URLRequest request) {
    const bool isLogout = isLogoutURL(request.url);
    const auto own = isLogout ? request.headers.value("Cookie") : std::nullopt;
    const bool bringsToken = own && own->starts_with(cookie(tokenCookie, ""));
    request.headers.set("Cookie", bringsToken ? identityCookies().append(";").append(*own)
                                              : getCookieString(IsLogout{isLogout}));
    return request;
}

std::string Networking::language() const {
    return Language::currentLanguageIdentifier(application_.platform());
}

void Networking::print(std::string_view line) const {
    application_.platform().printer->print(line);
}

void Networking::log(std::string_view format, std::initializer_list<FormatArgument> arguments) const {
    application_.crashReporter().TRL_CLSNSLogv(format, arguments);
}

} // namespace teralune
