#include "Tests/Faults/FaultCounts.h"
#include "Tests/Faults/Wires.h"

#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <limits>
#include <netdb.h>
#include <random>
#include <thread>

namespace teralune {
namespace {

/// Lookups of names that end in ".stuck.test" hang in this program until they are released, as with a name
/// server that never answers; released, they fail.
struct StuckLookups {
    std::atomic<int> count = 0;
    std::atomic<int> releases = 0;

    void change(std::atomic<int>& value, int by) {
        value += by;
        value.notify_all();
    }
    void waitFor(int least, int most = std::numeric_limits<int>::max()) {
        for (int now = count; now < least || now > most; now = count) {
            count.wait(now);
        }
    }
    void release() {
        change(releases, 1);
        waitFor(0, 0);
    }
    int hang() {
        const int before = releases;
        change(count, 1);
        releases.wait(before);
        change(count, -1);
        return EAI_NONAME;
    }
};

std::string stuckHost(std::size_t index) {
    return "http://h" + std::to_string(index) + ".stuck.test/";
}

/// Never destroyed: a lookup may hang while the program ends.
StuckLookups& stuckLookups() {
    static StuckLookups& lookups = *new StuckLookups;
    return lookups;
}

TEST(RequestRaceTests, cancels_from_any_thread_meet_completions_once) {
    constexpr std::size_t batch = 500;
    constexpr std::size_t underWay = 16;
    const std::size_t rounds = faultCount(10, 200);
    Wires wires;
    std::size_t cancelled = 0;
    for (std::size_t round = 0; round < rounds; ++round) {
        wires.expect(batch);
        std::vector<RequestHandle> handles(batch);
        std::atomic<std::size_t> sent = 0;
        std::vector<std::jthread> cancelling;
        for (std::size_t thread = 0; thread < 4; ++thread) {
            cancelling.emplace_back([&, thread] {
                // Each thread lags behind in its own way, so that cancels meet requests of every age, and now
                // and then the end of them all.
                const std::size_t lag = thread * thread * 3;
                for (std::size_t index = thread; index < batch; index += 5) {
                    while (sent <= std::min(index + lag, batch - 1)) {
                        std::this_thread::yield();
                    }
                    handles[index].cancel();
                }
            });
        }
        for (std::size_t index = 0; index < batch; ++index) {
            handles[index] = wires.send(index, wires.server.url("/" + std::to_string(index)));
            sent = index + 1;
            wires.main->runUntil([&] { return index + 1 < wires.told + underWay; });
            if (round % 2 == 1 && index % 100 == 99) {
                wires.renewManager();
            }
        }
        wires.expectEachToldOnce();
        cancelling.clear();
        EXPECT_EQ(wires.successes + wires.cancellations, batch);
        EXPECT_GT(wires.successes, 0U);
        cancelled += wires.cancellations;
    }
    EXPECT_GT(cancelled, 0U);
    printFaults("cancel against completion", rounds * batch,
                std::to_string(cancelled) + " cancelled, each told once");
}

TEST(RequestRaceTests, whatever_the_order_of_events_each_request_is_told_once) {
    const std::size_t seeds = faultCount(2'000, 100'000);
    std::size_t sent = 0;
    for (std::size_t seed = 0; seed < seeds; ++seed) {
        std::mt19937 random(static_cast<unsigned>(seed));
        FakeApplication host;
        ScriptedTransport& transport = *host.fakePlatform.transport;
        host.fakeUserAccountModel.signIn("c1", "old");
        std::optional<Networking> client(std::in_place, host, host.constants);
        std::vector<RequestHandle> handles;
        std::vector<int> told;
        told.reserve(100);
        const auto send = [&] {
            SessionManager* const managers[] = {&client->sessionManagerWithPrivateToken(),
                                                &client->sessionManagerWithAnyToken()};
            int& count = told.emplace_back();
            handles.push_back(
                client->makeRequest("https://api.test/", HttpMethod::get, {}, *managers[random() % 2])
                    .response([&count](const auto&) { ++count; }));
        };
        const auto answer = [&](std::size_t index, int status) {
            transport.answer(index, ScriptedTransport::reply(status, R"({"jwt":"new"})"));
        };
        for (int step = 0; step < 100; ++step) {
            const auto event = random() % 9;
            const std::size_t exchanges = transport.requests().size();
            if (event == 0)
                send();
            else if (event == 1 && !handles.empty() && random() % 2 == 0)
                handles[random() % handles.size()].cancel();
            else if (event == 2 && exchanges > 0)
                transport.answer(random() % exchanges,
                                 ScriptedTransport::failure(HttpTransportError::timedOut));
            else if (event <= 4 && exchanges > 0)
                answer(random() % exchanges, random() % 3 == 0 ? 200 : 403);
            else if (event == 5)
                host.fakePlatform.mainQueue->runNext();
            else if (event == 6 && random() % 20 == 0)
                client.emplace(host, host.constants);
            else
                host.fakePlatform.httpDelegateQueue->runNext();
        }
        if (seed % 2 == 0)
            client.reset();
        host.run();
        for (std::size_t index = 0; index < transport.requests().size(); ++index, host.run())
            answer(index, 200);
        EXPECT_THAT(told, testing::Each(1)) << "seed " << seed;
        EXPECT_EQ(transport.pendingCount(), 0U) << "seed " << seed;
        sent += told.size();
    }
    printFaults("orders of events", seeds, std::to_string(sent) + " requests, each told once");
}

TEST(RequestRaceTests, completions_may_end_everything) {
    const std::size_t rounds = faultCount(100, 5'000);
    constexpr std::size_t count = 24;
    Wires wires;
    for (std::size_t round = 0; round < rounds; ++round) {
        wires.application.settings.setAccessToken(round % 2 == 0 ? "old" : "new");
        wires.expect(2 * count);
        std::vector<RequestHandle> handles(count);
        const std::string held = "/held" + std::to_string(round);
        wires.onTold = [&] {
            if (wires.told == round % count + 1) {
                round % 3 == 0   ? handles.clear()
                : round % 3 == 1 ? wires.manager.reset()
                                 : wires.networking.reset();
            }
        };
        for (std::size_t index = 0; index < count; ++index) {
            const std::string path = index % 12 == 3 && round % 3 < 2 ? held : "/";
            handles[index] = wires.send(index, wires.server.url(path));
            wires.ask(count + index);
        }
        wires.main->runUntil([&] { return wires.told > round % count; });
        handles.clear();
        wires.expectEachToldOnce();
        wires.onTold = nullptr;
        wires.server.release(held);
        wires.manager.reset();
        wires.networking.reset();
        wires.open();
    }
    printFaults("ends from within a completion", rounds,
                std::to_string(2 * count) + " requests each, told once");
}

TEST(RequestRaceTests, lookups_that_hang_hold_up_nobody_and_a_shutdown_tells_everyone_and_waits_for_nobody) {
    CurlTransport::Limits limits;
    limits.connectTimeout = std::chrono::seconds(2);
    Wires wires(limits);
    const auto sendAll = [&wires](std::size_t count, std::size_t lookups, const std::string& url) {
        wires.expect(count);
        for (std::size_t index = 0; index < count; ++index) {
            wires.send(index, index < lookups ? stuckHost(index) : url).detach();
        }
    };
    const std::size_t count = faultCount(100, 1'000);
    sendAll(count, count / 10, wires.server.url());
    wires.expectEachToldOnce();
    EXPECT_EQ(wires.successes, count - count / 10);
    stuckLookups().release();
    printFaults("lookups that hang", count / 10, "given up, the other requests answered");

    sendAll(1'000, 20, wires.server.url("/held"));
    stuckLookups().waitFor(20);
    wires.server.waitForRequests(count - count / 10 + 6);
    const auto begin = std::chrono::steady_clock::now();
    wires.manager.reset();
    wires.networking.reset();
    wires.application.fakePlatform.services.transport.reset();
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
    wires.expectEachToldOnce();
    EXPECT_EQ(wires.cancellations, 1'000U);
    stuckLookups().release();
    printFaults("shutdown with requests under way", 1'000,
                "each told -999, in " + std::to_string(taken.count()) + " ms, with 20 lookups stuck");
}

TEST(RequestRaceTests, a_process_may_exit_with_requests_under_way) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::size_t rounds = faultCount(3, 100);
    for (std::size_t round = 0; round < rounds; ++round) {
        EXPECT_EXIT(
            {
                // One transport lives until the end, another, which is shaking hands, ends with the static
                // objects.
                static Wires& kept = *new Wires;
                static const std::shared_ptr<HttpTransport> ending = std::make_shared<CurlTransport>();
                kept.expect(100);
                for (std::size_t index = 0; index < 100; ++index) {
                    kept.send(index, index < 2 ? stuckHost(index) : kept.server.url("/held")).detach();
                }
                static const auto transfer =
                    ending->send({"https" + kept.server.url().substr(4), HttpMethod::get, {}, {}},
                                 TransferLane::standard, [](const TransferOutcome&) {});
                stuckLookups().waitFor(1);
                kept.server.waitForRequests(6);
                round % 2 == 0 ? std::exit(0) : std::quick_exit(0);
            },
            testing::ExitedWithCode(0), "");
    }
    printFaults("exit with requests under way", rounds, "status 0");
}

TEST(RequestRaceTests, one_request_that_is_refused_for_ever_or_a_refresh_that_hangs_holds_up_nobody_else) {
    const std::size_t count = faultCount(100, 5'000);
    for (const bool hangs : {false, true}) {
        Wires wires;
        (hangs ? wires.isRefreshHeld : wires.refusesForEver) = true;
        wires.expect(count + 1);
        wires.ask(count);
        for (std::size_t index = 0; index < count; ++index) {
            // In the same session, and in another.
            if (index % 2 == 0) {
                wires.networking->removeNote("p", [&wires, index](bool done) { wires.tell(index, done); });
            } else {
                wires.networking->verify(
                    "p", "s", SolutionOrigin::input,
                    [&wires, index](const VerifyReply& reply) { wires.tell(index, reply.success); });
            }
        }
        wires.main->runUntil([&] { return wires.told == count && wires.refreshes > (hangs ? 0U : 10U); });
        EXPECT_EQ(wires.runs[count], 0);
        wires.networking.reset();
        wires.expectEachToldOnce();
        EXPECT_EQ(wires.successes, count);
        printFaults(hangs ? "a refresh that hangs" : "a request that is refused for ever", count,
                    "the others answered, " + std::to_string(wires.refreshes) + " refreshes");
    }
}

TEST(RequestRaceTests, a_refresh_that_never_ends_fails_what_waits_for_it_and_the_next_one_helps) {
    CurlTransport::Limits limits;
    limits.controlTimeout = std::chrono::seconds(1);
    Wires wires(limits);
    const std::size_t count = faultCount(400, 10'000);
    const auto askForEvery = [&](std::size_t step, std::size_t first) {
        for (std::size_t index = first; index < count; index += step) {
            wires.ask(index);
        }
    };
    for (const bool isHeld : {true, false}) {
        wires.isRefreshHeld = isHeld;
        wires.expect(count);
        std::thread other(askForEvery, 2, 1);
        askForEvery(2, 0);
        other.join();
        wires.expectEachToldOnce();
        EXPECT_EQ(wires.successes, isHeld ? 0 : count);
        printFaults("requests with a stale token", count,
                    std::to_string(wires.successes) + " answered, " + std::to_string(wires.refreshes) +
                        " refreshes");
    }
}

} // namespace

/// libcurl finds this function, for the program comes before the system's library.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** found) {
    if (name != nullptr && std::string_view(name).ends_with(".stuck.test"))
        return stuckLookups().hang();
    static const auto system = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return system(name, service, hints, found);
}

} // namespace teralune
