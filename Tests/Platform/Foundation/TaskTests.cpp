#include "Platform/Dispatch/CountingSemaphore.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Tasks/Task.h"
#include "Tests/Support/ManualQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace teralune {
namespace {

const Error refused{"Test", 7, "refused", {}};

TEST(Task, continuations_run_once_each_in_order_and_never_inside_the_call_that_adds_them) {
    const auto queue = std::make_shared<ManualQueue>();
    const TaskCompletionSource<int> source;
    std::vector<int> seen;
    auto before =
        source.task().continueWith(queue, [&](const Result<int>& result) { seen.push_back(result.value()); });
    EXPECT_FALSE(source.task().isCompleted());
    EXPECT_TRUE(source.complete(5));
    EXPECT_FALSE(source.complete(6));
    auto after =
        source.task().continueWith(queue, [&](Result<int> result) { seen.push_back(result.value() + 1); });
    EXPECT_TRUE(seen.empty());
    EXPECT_FALSE(before.isCompleted());
    queue->runAll();
    EXPECT_EQ(seen, (std::vector<int>{5, 6}));
    EXPECT_TRUE(before.outcome()->succeeded());
    EXPECT_TRUE(after.outcome()->succeeded());
    EXPECT_EQ(source.task().outcome()->value(), 5);
}

TEST(Task, a_continuation_may_return_nothing_a_value_a_result_or_a_task) {
    const auto queue = std::make_shared<ManualQueue>();
    const TaskCompletionSource<std::string> inner;
    const Task<int> start = Task<int>::forResult(2);
    const Task<void> nothing = start.onSuccess(queue, [](int) {});
    const Task<std::string> value = start.onSuccess(queue, [](int number) { return std::to_string(number); });
    const Task<int> failure = start.onSuccess(queue, [](int) -> Result<int> { return refused; });
    const Task<std::string> task = start.onSuccess(queue, [&](int) { return inner.task(); });
    const Task<int> all = nothing.onSuccess(queue, [owned = std::make_unique<int>(9)] { return *owned; });
    queue->runAll();
    EXPECT_TRUE(nothing.outcome()->succeeded());
    EXPECT_EQ(value.outcome()->value(), "2");
    EXPECT_EQ(failure.outcome()->error(), refused);
    EXPECT_EQ(all.outcome()->value(), 9);
    EXPECT_FALSE(task.isCompleted());
    inner.complete(std::string("late"));
    EXPECT_EQ(task.outcome()->value(), "late");
}

TEST(Task, an_error_passes_by_the_successes_to_the_one_who_takes_it) {
    const auto queue = std::make_shared<ManualQueue>();
    const Task<int> start = Task<int>::forResult(refused);
    const auto skipped = [](auto&&...) { ADD_FAILURE() << "ran"; };
    const Task<int> end = start.onSuccess(queue, skipped)
                              .onSuccess(queue, [] { return Task<int>::forResult(1); })
                              .onSuccess(queue, [](int) { return Result<std::string>(std::string()); })
                              .continueWith(queue, [](const Result<std::string>& result) -> Result<int> {
                                  return static_cast<int>(result.error().code);
                              });
    queue->runAll();
    EXPECT_EQ(end.outcome()->value(), 7);
}

TEST(Task, when_all_ends_with_the_last_and_with_the_first_error_of_the_list) {
    const TaskCompletionSource<void> sources[3];
    const auto all = [&] { return whenAll({sources[0].task(), sources[1].task(), sources[2].task()}); };
    const Task<void> waiting = all();
    sources[2].complete(Error{"Test", 3, "", {}});
    sources[0].complete(Result<void>());
    EXPECT_FALSE(waiting.isCompleted());
    sources[1].complete(Error{"Test", 2, "", {}});
    EXPECT_EQ(waiting.outcome()->error().code, 2);
    EXPECT_EQ(all().outcome()->error().code, 2);
    EXPECT_TRUE(whenAll({}).outcome()->succeeded());
}

TEST(Task, of_many_threads_that_complete_it_one_wins_and_every_continuation_runs_once) {
    QueuePool pool(2, QueuePool::Priority::standard);
    const auto queue = pool.makeConcurrentQueue("continuations");
    const TaskCompletionSource<int> source;
    std::atomic<int> wins = 0;
    std::atomic<int> calls = 0;
    CountingSemaphore ran(0);
    std::vector<std::jthread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&, number] {
            for (int count = 0; count < 50; ++count) {
                (void)source.task().continueWith(queue, [&](const Result<int>& result) {
                    calls += result.succeeded() ? 1 : 0;
                    ran.signal();
                });
            }
            wins += source.complete(number) ? 1 : 0;
        });
    }
    threads.clear();
    for (int count = 0; count < 200; ++count) {
        ran.wait();
    }
    EXPECT_EQ(wins, 1);
    EXPECT_EQ(calls, 200);
}

} // namespace
} // namespace teralune
