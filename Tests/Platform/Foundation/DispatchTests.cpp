#include "Platform/Dispatch/CountingSemaphore.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Dispatch/QueuePool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <thread>
#include <vector>

namespace teralune {
namespace {

using namespace std::chrono_literals;

/// Work that must be dropped: what it holds tells whether it was.
DispatchQueue::Work neverRun(const std::shared_ptr<int>& held) {
    return [held] { ADD_FAILURE() << "ran"; };
}

TEST(QueuePool, a_serial_queue_runs_one_piece_after_the_other_in_order) {
    QueuePool pool(4, QueuePool::Priority::standard);
    const auto queue = pool.makeSerialQueue("serial");
    std::vector<int> order;
    std::atomic<int> running = 0;
    for (int number = 0; number < 500; ++number) {
        queue->async([&, number] {
            EXPECT_EQ(++running, 1);
            EXPECT_TRUE(queue->isCurrent());
            order.push_back(number);
            --running;
        });
    }
    queue->sync([&] { order.push_back(500); });
    CountingSemaphore ran(0);
    queue->asyncAfter(2ms, [&] {
        EXPECT_TRUE(queue->isCurrent());
        order.push_back(501);
        ran.signal();
    });
    ran.wait();
    EXPECT_FALSE(ran.wait(0ms));
    EXPECT_FALSE(queue->isCurrent());
    ASSERT_EQ(order.size(), 502U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(QueuePool, a_concurrent_queue_runs_as_many_pieces_at_once_as_there_are_threads) {
    std::barrier everybody(4);
    QueuePool pool(3, QueuePool::Priority::background);
    const auto queue = pool.makeConcurrentQueue("concurrent");
    // Each piece waits for the others, so that this would stand still if one had to wait for another's end.
    for (int count = 0; count < 3; ++count) {
        queue->async([&] { everybody.arrive_and_wait(); });
    }
    everybody.arrive_and_wait();
}

TEST(QueuePool, its_end_waits_for_running_work) {
    auto pool = std::make_unique<QueuePool>(2, QueuePool::Priority::standard);
    const auto queue = pool->makeConcurrentQueue("concurrent");
    CountingSemaphore started(0);
    CountingSemaphore release(0);
    bool ended = false;
    queue->async([&] {
        started.signal();
        release.wait();
        ended = true;
    });
    started.wait();
    const std::jthread releasing([&] { release.signal(); });
    pool.reset();
    EXPECT_TRUE(ended);
}

TEST(QueuePool, its_end_drops_what_has_not_begun_even_when_its_own_work_ends_it) {
    auto pool = std::make_unique<QueuePool>(1, QueuePool::Priority::standard);
    const auto serial = pool->makeSerialQueue("serial");
    const auto concurrent = pool->makeConcurrentQueue("concurrent");
    const auto held = std::make_shared<int>(0);
    CountingSemaphore queued(0);
    CountingSemaphore ended(0);
    serial->async([&] {
        queued.wait();
        pool.reset();
        ended.signal();
    });
    serial->async(neverRun(held));
    concurrent->async(neverRun(held));
    queued.signal();
    ended.wait();
    // Comes back, since the piece is dropped at the latest when the thread of the pool has gone.
    serial->sync([] { ADD_FAILURE() << "ran"; });
}

TEST(QueuePool, its_queues_outlive_it_and_then_drop_work_at_once) {
    auto pool = std::make_unique<QueuePool>(2, QueuePool::Priority::standard);
    const auto serial = pool->makeSerialQueue("serial");
    const auto concurrent = pool->makeConcurrentQueue("concurrent");
    const auto held = std::make_shared<int>(0);
    // A piece that holds its own queue must not keep the queue alive for ever.
    serial->asyncAfter(1h, [serial, work = neverRun(held)]() mutable { work(); });
    concurrent->asyncAfter(1h, [concurrent, work = neverRun(held)]() mutable { work(); });
    pool.reset();
    EXPECT_EQ(serial.use_count(), 1);
    EXPECT_EQ(concurrent.use_count(), 1);
    serial->async(neverRun(held));
    serial->sync(neverRun(held));
    concurrent->asyncAfter(0ms, neverRun(held));
    EXPECT_EQ(held.use_count(), 1);
}

TEST(QueuePoolDeathTest, sync_on_the_queue_itself_and_throwing_work_end_the_program) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            QueuePool pool(1, QueuePool::Priority::standard);
            const auto queue = pool.makeSerialQueue("own");
            queue->sync([&] { queue->sync([] {}); });
        },
        "own");
    EXPECT_DEATH(
        {
            QueuePool pool(1, QueuePool::Priority::standard);
            pool.makeConcurrentQueue("throwing")->sync([] { throw std::runtime_error("thrown"); });
        },
        "thrown");
}

TEST(MainQueue, drain_leaves_what_its_work_adds_for_the_next_call) {
    MainQueue queue;
    std::vector<int> order;
    EXPECT_FALSE(queue.drain());
    queue.async([&] {
        EXPECT_TRUE(queue.isCurrent());
        order.push_back(1);
        queue.async([&] { order.push_back(3); });
    });
    queue.async([&] { order.push_back(2); });
    EXPECT_TRUE(queue.drain());
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    EXPECT_TRUE(queue.drain());
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
    EXPECT_FALSE(queue.isCurrent());
}

TEST(MainQueue, run_until_waits_for_delayed_work_and_for_work_from_other_threads_also_inside_work) {
    MainQueue queue;
    std::vector<int> order;
    queue.asyncAfter(3ms, [&] { order.push_back(4); });
    queue.asyncAfter(1ms, [&] { order.push_back(3); });
    queue.async([&] {
        queue.runUntil([&] { return !order.empty(); });
        order.push_back(2);
    });
    queue.async([&] { order.push_back(1); });
    EXPECT_TRUE(queue.nextDue());
    queue.runUntil([&] { return order.size() == 4; });
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
    EXPECT_FALSE(queue.nextDue());

    bool ran = false;
    const std::jthread other([&] { queue.sync([&] { ran = true; }); });
    queue.runUntil([&] { return ran; });

    EXPECT_FALSE(queue.runUntil([] { return false; }, 1ms));
    EXPECT_TRUE(queue.runUntil([] { return true; }, 0ms));
}

TEST(MainQueue, its_wake_handler_hears_of_the_first_piece_and_of_an_earlier_delay) {
    MainQueue queue;
    int wakes = 0;
    int ran = 0;
    queue.async([&] { queue.async([&] { ++ran; }); });
    queue.setWakeHandler([&] { ++wakes; });
    EXPECT_EQ(wakes, 1);
    queue.async([&] { ++ran; });
    EXPECT_EQ(wakes, 1);
    queue.asyncAfter(2h, [] {});
    EXPECT_EQ(wakes, 2);
    queue.asyncAfter(3h, [] {});
    EXPECT_EQ(wakes, 2);
    // One call for each wake runs all that is added.
    queue.drain();
    EXPECT_EQ(wakes, 3);
    queue.drain();
    EXPECT_EQ(ran, 2);
    queue.async([] {});
    EXPECT_EQ(wakes, 4);
}

TEST(MainQueue, drops_what_is_left_at_its_end) {
    const auto held = std::make_shared<int>(0);
    auto queue = std::make_unique<MainQueue>();
    queue->async(neverRun(held));
    queue->asyncAfter(1h, neverRun(held));
    queue.reset();
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
} // namespace teralune
