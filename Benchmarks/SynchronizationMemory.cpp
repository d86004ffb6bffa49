#include "Benchmarks/SynchronizationMemory.h"

#include "Benchmarks/BenchmarkStore.h"
#include "Benchmarks/InterleavedRatio.h"
#include "Benchmarks/NotebookBytes.h"
#include "Classes/Jobs/NotebookSynchronizationJob.h"
#include "Classes/Networking/Networking.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Http/CurlTransport.h"
#include "Tests/Support/LoopbackServer.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <malloc.h>

namespace teralune::benchmarks {

namespace {

/// A server in a process of its own, so that its copies of the reply don't count. It has the notebook and
/// nothing else.
class NotebookServer {
public:
    explicit NotebookServer(int noteCount) {
        int ends[2] = {};
        require(pipe(ends) == 0, "the server has a pipe");
        process_ = fork();
        if (process_ == 0) {
            const std::string reply = notebookBytes(noteCount, {});
            const LoopbackServer server([&reply](const LoopbackServer::Request& request) {
                return request.target() == "/api/notebookEntriesForMobileAll"
                           ? LoopbackServer::Reply(200, reply, {{"Content-Type", "application/json"}})
                           : LoopbackServer::Reply(404, "");
            });
            const std::string url = server.url("");
            require(write(ends[1], url.data(), url.size()) > 0, "the server tells its address");
            pause();
        }
        close(ends[1]);
        char url[64] = {};
        require(read(ends[0], url, sizeof url - 1) > 0, "the server tells its address");
        close(ends[0]);
        host_ = std::string(url).substr(std::string("http://").size());
    }
    ~NotebookServer() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    const std::string& host() const { return host_; }

private:
    pid_t process_ = -1;
    std::string host_;
};

/// In bytes, of a line such as "VmHWM:	 1234 kB".
double processStatus(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == name + ":") {
            double kilobytes = 0;
            status >> kilobytes;
            return kilobytes * 1024;
        }
    }
    require(false, "the system tells what memory is resident");
    return 0;
}

double peakGrowth(const NotebookServer& server, int noteCount) {
    BenchmarkStore store;
    FakeApplication& application = store.application();
    PlatformServices& services = application.fakePlatform.services;
    const auto mainQueue = std::make_shared<MainQueue>();
    services.mainQueue = mainQueue;
    services.backgroundQueue = services.queuePool->makeConcurrentQueue("background");
    services.httpDelegateQueue = services.queuePool->makeSerialQueue("http");
    services.transport = std::make_shared<CurlTransport>();
    application.constants.isHttps = false;
    application.constants.api = server.host();
    application.fakeUserAccountModel.signIn("somebody", "token");
    application.dataControllerService = &store.controller();
    Networking networking(application, application.constants);
    application.networkingService = &networking;
    NotebookSynchronizationJob job(application);

    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5"; // sets the peak back
    const double before = processStatus("VmRSS");
    job.runSynchronizationJob();
    while (job.phase() != NotebookSynchronizationJob::Phase::idle) {
        require(job.phase() != NotebookSynchronizationJob::Phase::parked, "the notebook is downloaded");
        mainQueue->runUntil([] { return false; }, std::chrono::milliseconds(5));
    }
    const double growth = processStatus("VmHWM") - before;
    require(store.repository().noteCount() == noteCount, "the synchronization stores every note");
    return growth;
}

} // namespace

bool compareSynchronizationMemory(int noteCount) {
    const NotebookServer server(noteCount);
    const double replyBytes = static_cast<double>(notebookBytes(noteCount, {}).size());
    constexpr int rounds = 9;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        ratios.push_back(peakGrowth(server, noteCount) / replyBytes);
    }
    constexpr double goal = 12;
    const auto [lowest, highest] = std::minmax_element(ratios.begin(), ratios.end());
    const double median = medianOf(ratios);
    std::printf("%-52s %6.3f  (%.3f to %.3f)  %.1f MB a reply  goal %.2f %s\n",
                "peak memory of a synchronization / the reply's bytes", median, *lowest, *highest,
                replyBytes / 1e6, goal, median <= goal ? "met" : "missed");
    return median <= goal;
}

} // namespace teralune::benchmarks
