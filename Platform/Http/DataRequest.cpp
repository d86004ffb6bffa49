#include "Platform/Http/DataRequest.h"

#include "Platform/Http/DataRequestPlan.h"

namespace teralune {

DataRequest::DataRequest(std::unique_ptr<Plan> plan) : plan_(std::move(plan)) {}
DataRequest::DataRequest(DataRequest&&) noexcept = default;
DataRequest& DataRequest::operator=(DataRequest&&) noexcept = default;
DataRequest::~DataRequest() = default;

const std::string& DataRequest::absoluteURL() const {
    return plan_->running.request.url;
}

DataRequest&& DataRequest::validate() && {
    plan_->running.isValidated = true;
    return std::move(*this);
}

DataRequest&& DataRequest::withoutRetrier() && {
    plan_->running.asksRetrier = false;
    return std::move(*this);
}

DataRequest&& DataRequest::inLane(TransferLane lane) && {
    plan_->running.lane = lane;
    return std::move(*this);
}

DataRequest&& DataRequest::header(std::string name, std::string value) && {
    plan_->running.request.headers.add(std::move(name), std::move(value));
    return std::move(*this);
}

RequestHandle DataRequest::response(Handler<void> handler) && {
    return std::move(*this).send([handler = std::move(handler)](
                                     DataResponse<void> raw) mutable -> UniqueFunction<void()> {
        return [handler = std::move(handler), raw = std::move(raw)]() mutable { handler(std::move(raw)); };
    });
}

RequestHandle DataRequest::responseData(Handler<std::string> handler) && {
    return std::move(*this).send(makeResponseFinisher<std::string>(
        std::move(handler), [](const DataResponse<void>& raw) -> Result<std::string> { return *raw.data; }));
}

RequestHandle DataRequest::responseString(Handler<std::string> handler) && {
    return std::move(*this).send(makeResponseFinisher<std::string>(std::move(handler), text));
}

RequestHandle DataRequest::responseJSON(Handler<boost::json::value> handler) && {
    return std::move(*this).send(makeResponseFinisher<boost::json::value>(std::move(handler), json));
}

RequestHandle DataRequest::send(ResponseFinisher finisher) && {
    const auto plan = std::move(plan_);
    return RequestHandle(RunningRequest::start(plan->session, std::move(plan->running), std::move(finisher)));
}

} // namespace teralune
