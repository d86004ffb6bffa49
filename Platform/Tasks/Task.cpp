#include "Platform/Tasks/Task.h"

#include <atomic>

namespace teralune {

Task<void> whenAll(std::vector<Task<void>> tasks) {
    struct Gathered {
        explicit Gathered(std::size_t count) : errors(count), missing(count) {}

        TaskCompletionSource<void> source;
        std::vector<std::optional<Error>> errors;
        std::atomic<std::size_t> missing;

        void complete() const {
            for (const std::optional<Error>& error : errors) {
                if (error) {
                    source.complete(*error);
                    return;
                }
            }
            source.complete(Result<void>());
        }
    };
    const auto gathered = std::make_shared<Gathered>(tasks.size());
    if (tasks.empty()) {
        gathered->complete();
    }
    for (std::size_t index = 0; index < tasks.size(); ++index) {
        tasks[index].addWaiter(nullptr, [gathered, index](const Result<void>& result) {
            if (!result) {
                gathered->errors[index] = result.error();
            }
            if (--gathered->missing == 0) {
                gathered->complete();
            }
        });
    }
    return gathered->source.task();
}

} // namespace teralune
