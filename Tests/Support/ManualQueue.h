#pragma once

#include "Platform/Dispatch/DispatchQueue.h"

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace teralune {

/// A serial queue whose work runs when the test says so, on the test's thread, and whose time passes only
/// through advance(). Work may be added from any thread. What has not run when the queue ends is dropped.
class ManualQueue final : public DispatchQueue {
public:
    explicit ManualQueue(std::string label = "manual") : label_(std::move(label)) {}
    ~ManualQueue() override;

    const std::string& label() const override { return label_; }
    void async(Work work) override { asyncAfter(std::chrono::milliseconds(0), std::move(work)); }
    void asyncAfter(std::chrono::milliseconds delay, Work work) override;
    bool isCurrent() const override;

    /// Runs the first piece that is due; false when there is none.
    bool runNext();
    /// Runs what is due, and what that adds, until nothing is; returns how many pieces ran.
    std::size_t runAll();
    /// Lets this much time pass, running each piece when its moment comes.
    void advance(std::chrono::milliseconds step);

private:
    /// The moment a piece is due and then its number in the order of arrival.
    using Order = std::pair<std::chrono::milliseconds, std::size_t>;

    bool runFirstDueBy(std::chrono::milliseconds moment);

    std::string label_;
    mutable std::mutex mutex_;
    std::chrono::milliseconds now_{0};
    std::size_t added_ = 0;
    std::map<Order, Work> waiting_;
};

} // namespace teralune
