// What a request costs on its way through Networking::makeRequest(), beside the bare engine over as many
// connections and, where it is installed, beside the application toolkit's client; and what a stale token
// costs 1,000 requests. Usage: HttpBenchmark [requests [rounds]]

#include "Benchmarks/BareClient.h"
#include "Benchmarks/KeepAliveServer.h"
#include "Benchmarks/PipelineClient.h"
#ifdef TERALUNE_BENCHMARK_QT
#include "Benchmarks/QtClient.h"
#endif

#include <cstdlib>
#include <ctime>

namespace teralune::benchmarks {
namespace {

constexpr std::size_t connections = 6;
constexpr std::size_t inFlight = 64;

/// The processor time of this process, all threads together: what is left of the measure on a machine that
/// is busy with other things.
Duration processorTime() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

template<class Work>
Duration processorTimeOf(Work&& work) {
    const Duration before = processorTime();
    work();
    return processorTime() - before;
}

class Comparison {
public:
    Comparison(std::size_t requests, std::size_t rounds) : requests_(requests), rounds_(rounds) {}

    bool manyAtOnce() {
        const Ratio many = interleavedRatio(
            rounds_, [&] { return pipeline_.run(requests_, inFlight); },
            [&] { return bare_.run(requests_, inFlight); });
        const double rate = static_cast<double>(requests_) * 1000;
        std::printf(
            "%zu GETs, %zu at once over %zu connections: %.0f a second against %.0f of bare libcurl\n",
            requests_, inFlight, connections, rate / many.measured.count(), rate / many.baseline.count());
        constexpr double goal = 0.85;
        const bool isMet = printRatio("HTTP pipeline, time against bare libcurl", many, 1 / goal);
        std::printf("  that is %.2f of its requests a second, %.2f to %.2f (goal %.2f)\n", 1 / many.median,
                    1 / many.highest, 1 / many.lowest, goal);
        printRatio("HTTP pipeline, processor time against bare libcurl",
                   interleavedRatio(
                       rounds_, [&] { return processorTimeOf([&] { pipeline_.run(requests_, inFlight); }); },
                       [&] { return processorTimeOf([&] { bare_.run(requests_, inFlight); }); }));
        return isMet;
    }

    bool oneAtATime() {
        const std::size_t single = std::max<std::size_t>(requests_ / 10, 1);
        const Ratio one = interleavedRatio(
            rounds_, [&] { return pipeline_.run(single, 1); }, [&] { return bare_.run(single, 1); });
        printRatio("HTTP pipeline, one at a time", one);
        const double each = 1000 / static_cast<double>(single);
        const double added = (one.measured - one.baseline).count() * each;
        constexpr double goal = 40;
        const double bare = one.baseline.count() * each;
        std::printf("  %.1f microseconds a request against %.1f: %.1f more, %.1f to %.1f (goal %.0f)\n",
                    one.measured.count() * each, bare, added, (one.lowest - 1) * bare,
                    (one.highest - 1) * bare, goal);
        return added <= goal;
    }

    /// Each of the requests must be served once, and refused once at most.
    bool staleToken() {
        KeepAliveServer::Counts& counts = stormServer_.counts();
        PipelineClient client(stormServer_.host());
        constexpr std::size_t storm = KeepAliveServer::numbers;
        int mostRefreshes = 0;
        int fewestRefreshes = storm;
        int refused = 0;
        int astray = 0;
        int mostConnections = 0;
        const Ratio ratio = interleavedRatio(
            rounds_,
            [&] {
                counts.reset();
                client.setToken(KeepAliveServer::staleToken);
                const Duration time = client.run(storm, storm);
                mostRefreshes = std::max(mostRefreshes, counts.refreshes.load());
                fewestRefreshes = std::min(fewestRefreshes, counts.refreshes.load());
                mostConnections = std::max(mostConnections, counts.mostConnections.load());
                for (std::size_t number = 0; number < storm; ++number) {
                    refused += counts.refused[number];
                    astray += counts.served[number] == 1 && counts.refused[number] <= 1 ? 0 : 1;
                }
                return time;
            },
            [&] { return client.run(storm, storm); });
        const bool isFast = printRatio("1000 GETs with a stale token against 1000 GETs", ratio, 2.5);
        std::printf(
            "  %d to %d refreshes, %.0f requests refused, %d lost or sent too often, %d connections\n",
            fewestRefreshes, mostRefreshes, refused / static_cast<double>(rounds_ + 1), astray,
            mostConnections);
        return isFast && fewestRefreshes == 1 && mostRefreshes == 1 && astray == 0 && mostConnections <= 8;
    }

    bool againstQt() {
#ifdef TERALUNE_BENCHMARK_QT
        QtClient qt(url_, pipeline_.headersSent());
        const Ratio ratio = interleavedRatio(
            rounds_, [&] { return pipeline_.run(requests_, inFlight); },
            [&] { return qt.run(requests_, inFlight); });
        constexpr double goal = 4;
        const bool isMet =
            printRatio("HTTP pipeline, time against Qt " TERALUNE_BENCHMARK_QT, ratio, 1 / goal);
        std::printf("  that is %.1f times its requests a second, %.1f to %.1f (goal %.0f)\n",
                    1 / ratio.median, 1 / ratio.highest, 1 / ratio.lowest, goal);
        return isMet;
#else
        std::printf("Qt is not installed: no comparison with its client\n");
        return true;
#endif
    }

private:
    const HttpHeaders& headersOfThePipeline() {
        pipeline_.run(1, 1);
        return pipeline_.headersSent();
    }

    const std::size_t requests_;
    const std::size_t rounds_;
    const KeepAliveServer server_;
    const KeepAliveServer stormServer_; ///< with no one else's connections
    const std::string url_ = "http://" + server_.host() + "/0";
    PipelineClient pipeline_{server_.host()};
    BareClient bare_{url_, headersOfThePipeline(), connections};
};

} // namespace
} // namespace teralune::benchmarks

int main(int argumentCount, char** arguments) {
    const auto number = [&](int index, std::size_t fallback) {
        return index < argumentCount ? std::strtoul(arguments[index], nullptr, 10) : fallback;
    };
    teralune::benchmarks::Comparison comparison(std::max(number(1, 20'000), 10UL),
                                                std::max(number(2, 9), 1UL));
    bool isMet = comparison.manyAtOnce();
    isMet = comparison.oneAtATime() && isMet;
    isMet = comparison.staleToken() && isMet;
    isMet = comparison.againstQt() && isMet;
    return isMet ? EXIT_SUCCESS : EXIT_FAILURE;
}
