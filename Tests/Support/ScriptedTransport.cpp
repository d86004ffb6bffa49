#include "Tests/Support/ScriptedTransport.h"

#include <algorithm>
#include <utility>

namespace teralune {

/// Drops its request when it ends, even after the transport has.
class ScriptedTransport::Handle final : public Transfer {
public:
    Handle(std::shared_ptr<Exchanges> exchanges, std::size_t index)
        : exchanges_(std::move(exchanges))
        , index_(index) {}
    ~Handle() override { exchanges_->take(index_); }

private:
    std::shared_ptr<Exchanges> exchanges_;
    std::size_t index_;
};

HttpTransport::Completion ScriptedTransport::Exchanges::take(std::size_t index) {
    const std::lock_guard lock(mutex);
    return std::exchange(completions.at(index), nullptr);
}

std::unique_ptr<Transfer> ScriptedTransport::send(URLRequest request, TransferLane lane,
                                                  Completion completion) {
    Script script;
    std::size_t index = 0;
    {
        const std::lock_guard lock(exchanges_->mutex);
        index = exchanges_->requests.size();
        exchanges_->requests.push_back(request);
        exchanges_->lanes.push_back(lane);
        exchanges_->completions.push_back(std::move(completion));
        script = script_;
    }
    if (auto outcome = script ? script(request) : std::nullopt) {
        answer(index, *std::move(outcome));
    }
    return std::make_unique<Handle>(exchanges_, index);
}

void ScriptedTransport::setScript(Script script) {
    const std::lock_guard lock(exchanges_->mutex);
    script_ = std::move(script);
}

void ScriptedTransport::answer(std::size_t index, TransferOutcome outcome) {
    const std::lock_guard lock(exchanges_->mutex);
    if (outcome.response && outcome.response->url.empty()) {
        outcome.response->url = exchanges_->requests.at(index).url;
    }
    queue_->async([exchanges = exchanges_, index, outcome = std::move(outcome)]() mutable {
        if (auto completion = exchanges->take(index)) {
            completion(std::move(outcome));
        }
    });
}

std::vector<URLRequest> ScriptedTransport::requests() const {
    const std::lock_guard lock(exchanges_->mutex);
    return exchanges_->requests;
}

std::vector<TransferLane> ScriptedTransport::lanes() const {
    const std::lock_guard lock(exchanges_->mutex);
    return exchanges_->lanes;
}

std::size_t ScriptedTransport::pendingCount() const {
    const std::lock_guard lock(exchanges_->mutex);
    return static_cast<std::size_t>(
        std::ranges::count(exchanges_->completions, true, &Completion::operator bool));
}

TransferOutcome ScriptedTransport::reply(int status, std::string body, HttpHeaders headers) {
    return {HTTPURLResponse{"", status, std::move(headers)}, std::move(body), std::nullopt};
}

TransferOutcome ScriptedTransport::failure(HttpTransportError code) {
    return {std::nullopt, "", httpTransportError(code)};
}

} // namespace teralune
