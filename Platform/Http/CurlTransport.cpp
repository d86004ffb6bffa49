#include "Platform/Http/CurlTransport.h"

#include "Platform/Http/CurlEngine.h"

namespace teralune {

namespace {

/// The caller's end of a transfer.
class CurlTransfer final : public Transfer {
public:
    CurlTransfer(std::shared_ptr<CurlEngine> engine, std::shared_ptr<CurlEngine::Job> job)
        : engine_(std::move(engine))
        , job_(std::move(job)) {}
    ~CurlTransfer() override { engine_->cancel(*job_); }
    bool withdraw() override { return engine_->withdraw(*job_); }

private:
    std::shared_ptr<CurlEngine> engine_;
    std::shared_ptr<CurlEngine::Job> job_;
};

} // namespace

CurlTransport::CurlTransport() : CurlTransport(Limits{}) {}

CurlTransport::CurlTransport(Limits limits) : engine_(CurlEngine::start(limits)) {}

CurlTransport::~CurlTransport() {
    engine_->stop();
}

std::unique_ptr<Transfer> CurlTransport::send(URLRequest request, TransferLane lane, Completion completion) {
    return std::make_unique<CurlTransfer>(engine_,
                                          engine_->add(std::move(request), lane, std::move(completion)));
}

} // namespace teralune
