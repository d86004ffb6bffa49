#include "Platform/Http/SessionManager.h"

#include "Platform/Http/DataRequestPlan.h"
#include "Platform/Http/MultipartFormData.h"
#include "Platform/Http/Session.h"
#include "Platform/Http/Url.h"
#include "Platform/PlatformServices.h"

namespace teralune {

SessionManager::SessionManager(const PlatformServices& platform, Configuration configuration)
    : session_(Session::make(*this, platform, std::move(configuration.httpAdditionalHeaders))) {}

SessionManager::~SessionManager() {
    session_->close();
}

void SessionManager::setAdapter(RequestAdapter* adapter) {
    session_->setAdapter(adapter);
}

void SessionManager::setRetrier(RequestRetrier* retrier) {
    session_->setRetrier(retrier);
}

SessionDelegate& SessionManager::delegate() {
    return session_->delegate;
}

DataRequest SessionManager::request(std::string_view url, HttpMethod method,
                                    const HttpParameters& parameters) {
    URLRequest request;
    request.url = Url::parse(url) ? url : std::string_view();
    request.method = method;
    return DataRequest(std::make_unique<DataRequest::Plan>(
        DataRequest::Plan{session_, {.request = encode(std::move(request), parameters)}}));
}

DataRequest SessionManager::upload(std::shared_ptr<const MultipartFormData> form, std::string_view url) {
    DataRequest upload = request(url, HttpMethod::post);
    upload.plan_->running.request.body = std::move(form);
    return upload;
}

} // namespace teralune
