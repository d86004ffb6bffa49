// What the request pipeline costs beside the bare engine: the same requests through a session manager, with
// adapter, validation, a text handler and completion on the main queue, and through libcurl alone, over as
// many connections. Usage: HttpBenchmark [requests [rounds]]

#include "Benchmarks/InterleavedRatio.h"
#include "Benchmarks/KeepAliveServer.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Http/CurlTransport.h"
#include "Platform/Http/RequestAdapter.h"
#include "Platform/Http/SessionManager.h"
#include "Platform/PlatformServices.h"

#include <curl/curl.h>

#include <cstdlib>
#include <ctime>

namespace teralune::benchmarks {
namespace {

constexpr std::size_t connections = 6;
constexpr std::size_t inFlight = 64;

class CookieAdapter final : public RequestAdapter {
public:
    Result<URLRequest> adapt(URLRequest request) override {
        request.headers.set("Cookie", "tq.platform=iOS;tq.app=App/1.0.1;tq.token=abcdefghijklmnopqrstuvwxyz");
        return request;
    }
};

class Pipeline {
public:
    explicit Pipeline(std::string url) : url_(std::move(url)) {
        platform_.mainQueue = main_;
        platform_.queuePool = std::make_shared<QueuePool>(2, QueuePool::Priority::standard);
        platform_.httpDelegateQueue = platform_.queuePool->makeSerialQueue("http");
        platform_.transport = std::make_shared<CurlTransport>();
        manager_ = std::make_unique<SessionManager>(
            platform_, SessionManager::Configuration{{{"Accept", "*/*"}, {"User-Agent", "benchmark"}}});
        manager_->setAdapter(&adapter_);
    }

    Duration run(std::size_t requests, std::size_t atOnce) {
        return timed([&] {
            completed_ = 0;
            unsent_ = requests;
            for (std::size_t index = 0; index < std::min(requests, atOnce); ++index) {
                sendNext();
            }
            main_->runUntil([&] { return completed_ == requests; });
        });
    }

private:
    void sendNext() {
        --unsent_;
        manager_->request(url_, HttpMethod::get)
            .validate()
            .responseString([this](DataResponse<std::string> response) {
                if (!response.result || response.result.value().size() != 256) {
                    fatalError("A request of the pipeline failed.");
                }
                ++completed_;
                if (unsent_ > 0) {
                    sendNext();
                }
            })
            .detach();
    }

    const std::string url_;
    std::shared_ptr<MainQueue> main_ = std::make_shared<MainQueue>();
    PlatformServices platform_;
    CookieAdapter adapter_;
    std::unique_ptr<SessionManager> manager_;
    std::size_t unsent_ = 0;
    std::size_t completed_ = 0;
};

/// One thread, one handle for each connection, each used again as soon as it is free: the least that the same
/// requests can cost.
class BareEngine {
public:
    explicit BareEngine(std::string url) : url_(std::move(url)), multi_(curl_multi_init()) {
        headers_ = curl_slist_append(headers_, "Accept: */*");
        headers_ = curl_slist_append(headers_, "User-Agent: benchmark");
        headers_ = curl_slist_append(
            headers_, "Cookie: tq.platform=iOS;tq.app=App/1.0.1;tq.token=abcdefghijklmnopqrstuvwxyz");
        for (std::size_t index = 0; index < connections; ++index) {
            CURL* const easy = curl_easy_init();
            curl_easy_setopt(easy, CURLOPT_URL, url_.c_str());
            curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_);
            curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
            curl_easy_setopt(easy, CURLOPT_PROXY, "");
            curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &append);
            handles_.push_back({easy, {}});
        }
        for (auto& [easy, body] : handles_) {
            curl_easy_setopt(easy, CURLOPT_WRITEDATA, &body);
            curl_easy_setopt(easy, CURLOPT_PRIVATE, &body);
        }
    }

    ~BareEngine() {
        for (const auto& [easy, body] : handles_) {
            curl_easy_cleanup(easy);
        }
        curl_multi_cleanup(multi_);
        curl_slist_free_all(headers_);
    }
    BareEngine(const BareEngine&) = delete;
    BareEngine& operator=(const BareEngine&) = delete;

    Duration run(std::size_t requests, std::size_t atOnce) {
        return timed([&] {
            std::size_t unsent = requests;
            std::size_t completed = 0;
            for (std::size_t index = 0; index < std::min(atOnce, handles_.size()); ++index, --unsent) {
                curl_multi_add_handle(multi_, handles_[index].easy);
            }
            while (true) {
                int running = 0;
                curl_multi_perform(multi_, &running);
                int left = 0;
                while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
                    CURL* const easy = message->easy_handle;
                    check(easy, message->data.result);
                    curl_multi_remove_handle(multi_, easy);
                    ++completed;
                    if (unsent > 0) {
                        --unsent;
                        curl_multi_add_handle(multi_, easy);
                    }
                }
                if (completed == requests) {
                    return;
                }
                curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
            }
        });
    }

private:
    struct Handle {
        CURL* easy;
        std::string body;
    };

    static std::size_t append(char* data, std::size_t size, std::size_t count, void* body) {
        static_cast<std::string*>(body)->append(data, size * count);
        return size * count;
    }

    static void check(CURL* easy, CURLcode code) {
        std::string* body = nullptr;
        long status = 0;
        curl_easy_getinfo(easy, CURLINFO_PRIVATE, &body);
        curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
        if (code != CURLE_OK || status != 200 || body->size() != 256) {
            fatalError("A request of the bare engine failed.");
        }
        body->clear();
    }

    const std::string url_;
    CURLM* const multi_;
    curl_slist* headers_ = nullptr;
    std::vector<Handle> handles_;
};

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

int measure(std::size_t requests, std::size_t rounds) {
    const KeepAliveServer server;
    Pipeline pipeline(server.url());
    BareEngine bare(server.url());

    const Ratio many = interleavedRatio(
        rounds, [&] { return pipeline.run(requests, inFlight); },
        [&] { return bare.run(requests, inFlight); });
    const double rate = static_cast<double>(requests) * 1000;
    std::printf("%zu GETs, %zu at once over %zu connections: %.0f a second against %.0f of bare libcurl\n",
                requests, inFlight, connections, rate / many.measured.count(), rate / many.baseline.count());
    constexpr double goal = 0.85;
    const bool isMet = printRatio("HTTP pipeline, time against bare libcurl", many, 1 / goal);
    std::printf("  that is %.2f of its requests per second (goal %.2f)\n", 1 / many.median, goal);

    printRatio("HTTP pipeline, processor time",
               interleavedRatio(
                   rounds, [&] { return processorTimeOf([&] { pipeline.run(requests, inFlight); }); },
                   [&] { return processorTimeOf([&] { bare.run(requests, inFlight); }); }));

    const std::size_t single = requests / 5;
    const Ratio one = interleavedRatio(
        rounds, [&] { return pipeline.run(single, 1); }, [&] { return bare.run(single, 1); });
    printRatio("HTTP pipeline, one at a time", one);
    const double each = 1000 / static_cast<double>(single);
    std::printf("  %.1f microseconds a request against %.1f: %.1f added\n", one.measured.count() * each,
                one.baseline.count() * each, (one.measured - one.baseline).count() * each);
    return isMet ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace
} // namespace teralune::benchmarks

int main(int argumentCount, char** arguments) {
    const auto number = [&](int index, std::size_t fallback) {
        return index < argumentCount ? std::strtoul(arguments[index], nullptr, 10) : fallback;
    };
    return teralune::benchmarks::measure(std::max(number(1, 10'000), 10UL), std::max(number(2, 7), 1UL));
}
