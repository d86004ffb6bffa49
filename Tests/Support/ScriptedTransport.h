#pragma once

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Http/HttpError.h"
#include "Platform/Http/HttpTransport.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace teralune {

/// A transport whose server is the test. Every request is kept, in the order of send(). The script answers it
/// as a piece of work of the queue; where it has no answer, and without a script, the request waits for
/// answer(). Any thread.
class ScriptedTransport final : public HttpTransport {
public:
    using Script = std::function<std::optional<TransferOutcome>(const URLRequest&)>;

    explicit ScriptedTransport(std::shared_ptr<DispatchQueue> queue) : queue_(std::move(queue)) {}

    std::unique_ptr<Transfer> send(URLRequest request, TransferLane lane, Completion completion) override;

    /// For the requests that are sent from now on.
    void setScript(Script script);
    /// Answers the request of that place in the order of sending. Does nothing when it was answered or
    /// dropped.
    void answer(std::size_t index, TransferOutcome outcome);

    std::vector<URLRequest> requests() const;
    std::vector<TransferLane> lanes() const;
    /// How many were sent and are neither answered nor dropped.
    std::size_t pendingCount() const;

    static TransferOutcome reply(int status, std::string body = {},
                                 HttpHeaders headers = {{"Content-Type", "application/json"}});
    static TransferOutcome failure(HttpTransportError code);

private:
    class Handle;
    /// One of each for every request.
    struct Exchanges {
        std::mutex mutex;
        std::vector<URLRequest> requests;
        std::vector<TransferLane> lanes;
        std::vector<Completion> completions; ///< empty once answered or dropped

        Completion take(std::size_t index);
    };

    const std::shared_ptr<DispatchQueue> queue_;
    const std::shared_ptr<Exchanges> exchanges_ = std::make_shared<Exchanges>();
    Script script_;
};

} // namespace teralune
