#include "Platform/Foundation/NotificationCenter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace teralune {
namespace {

const Notification news{"News", std::nullopt, {}};

TEST(NotificationCenter, observers_of_a_name_are_called_in_order_until_they_are_dropped) {
    NotificationCenter center;
    std::vector<std::string> calls;
    Observation first = center.observe("News", [&](const Notification&) { calls.push_back("first"); });
    std::optional<Observation> second = center.observe("News", [&](const Notification& notification) {
        calls.push_back("second " + std::get<std::string>(notification.userInfo.at("name")));
    });
    const Observation other = center.observe("Other", [&](const Notification&) { calls.push_back("other"); });
    center.post({"News", true, {{"name", std::string("a")}}});
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "second a"}));
    second.reset();
    first = center.observe("News", [&](const Notification&) { calls.push_back("replaced"); });
    calls.clear();
    center.post(news);
    EXPECT_EQ(calls, (std::vector<std::string>{"replaced"}));
}

TEST(NotificationCenter, observers_may_come_and_go_while_it_notifies) {
    NotificationCenter center;
    std::vector<std::string> calls;
    std::optional<Observation> own;
    std::optional<Observation> later;
    std::optional<Observation> added;
    own = center.observe("News", [&](const Notification&) {
        calls.push_back("own");
        own.reset();
        later.reset();
        added = center.observe("News", [&](const Notification&) { calls.push_back("added"); });
    });
    later = center.observe("News", [&](const Notification&) { calls.push_back("later"); });
    center.post(news);
    EXPECT_EQ(calls, (std::vector<std::string>{"own"}));
    center.post(news);
    EXPECT_EQ(calls, (std::vector<std::string>{"own", "added"}));
}

TEST(NotificationCenter, an_observation_may_outlive_its_centre_and_frees_what_its_handler_holds) {
    auto center = std::make_unique<NotificationCenter>();
    const auto held = std::make_shared<int>(1);
    std::optional<Observation> observation = center->observe("News", [held](const Notification&) {});
    const std::optional<Observation> survivor = center->observe("News", [](const Notification&) {});
    observation.reset();
    EXPECT_EQ(held.use_count(), 1);
    center.reset();
}

TEST(NotificationCenter, threads_may_post_and_observe_at_once) {
    NotificationCenter center;
    std::atomic<int> calls = 0;
    std::vector<std::jthread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                const Observation observation = center.observe("News", [&](const Notification&) { ++calls; });
                center.post(news);
            }
        });
    }
    threads.clear();
    EXPECT_GE(calls, 800);
    calls = 0;
    center.post(news);
    EXPECT_EQ(calls, 0);
}

} // namespace
} // namespace teralune
