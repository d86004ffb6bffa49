#include "Tests/Support/ScriptedTransport.h"

#include <utility>

namespace teralune {

struct ScriptedTransport::Exchange {
    URLRequest request;
    TransferLane lane;
    std::mutex mutex;
    Completion completion; ///< empty once answered or dropped

    Completion take() {
        const std::lock_guard lock(mutex);
        return std::exchange(completion, nullptr);
    }
};

class ScriptedTransport::Handle final : public Transfer {
public:
    explicit Handle(std::shared_ptr<Exchange> exchange) : exchange_(std::move(exchange)) {}
    ~Handle() override { exchange_->take(); }

private:
    std::shared_ptr<Exchange> exchange_;
};

ScriptedTransport::ScriptedTransport(std::shared_ptr<DispatchQueue> queue, Script script)
    : queue_(std::move(queue))
    , script_(std::move(script)) {}

ScriptedTransport::~ScriptedTransport() = default;

std::unique_ptr<Transfer> ScriptedTransport::send(URLRequest request, TransferLane lane,
                                                  Completion completion) {
    auto exchange = std::make_shared<Exchange>();
    exchange->request = std::move(request);
    exchange->lane = lane;
    exchange->completion = std::move(completion);
    Script script;
    std::size_t index = 0;
    {
        const std::lock_guard lock(mutex_);
        index = exchanges_.size();
        exchanges_.push_back(exchange);
        script = script_;
    }
    if (auto outcome = script ? script(exchange->request) : std::nullopt) {
        answer(index, *std::move(outcome));
    }
    return std::make_unique<Handle>(std::move(exchange));
}

void ScriptedTransport::setScript(Script script) {
    const std::lock_guard lock(mutex_);
    script_ = std::move(script);
}

void ScriptedTransport::answer(std::size_t index, TransferOutcome outcome) {
    std::shared_ptr<Exchange> exchange;
    {
        const std::lock_guard lock(mutex_);
        exchange = exchanges_.at(index);
    }
    if (outcome.response && outcome.response->url.empty()) {
        outcome.response->url = exchange->request.url;
    }
    queue_->async([exchange, outcome = std::move(outcome)]() mutable {
        if (auto completion = exchange->take()) {
            completion(std::move(outcome));
        }
    });
}

std::vector<URLRequest> ScriptedTransport::requests() const {
    const std::lock_guard lock(mutex_);
    std::vector<URLRequest> requests;
    for (const auto& exchange : exchanges_) {
        requests.push_back(exchange->request);
    }
    return requests;
}

std::vector<TransferLane> ScriptedTransport::lanes() const {
    const std::lock_guard lock(mutex_);
    std::vector<TransferLane> lanes;
    for (const auto& exchange : exchanges_) {
        lanes.push_back(exchange->lane);
    }
    return lanes;
}

std::size_t ScriptedTransport::pendingCount() const {
    const std::lock_guard lock(mutex_);
    std::size_t count = 0;
    for (const auto& exchange : exchanges_) {
        const std::lock_guard exchangeLock(exchange->mutex);
        count += exchange->completion ? 1 : 0;
    }
    return count;
}

TransferOutcome ScriptedTransport::reply(int status, std::string body, HttpHeaders headers) {
    return {HTTPURLResponse{"", status, std::move(headers)}, std::move(body), std::nullopt};
}

TransferOutcome ScriptedTransport::failure(HttpTransportError code) {
    return {std::nullopt, "", httpTransportError(code)};
}

} // namespace teralune
