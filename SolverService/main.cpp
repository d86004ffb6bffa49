#include "SolverService/Faults.h"
#include "SolverService/SolverService.h"

#include <CLI/CLI.hpp>
#include <signal.h>

#include <cstdio>

int main(int argumentCount, char** arguments) {
    teralune::SolverService::Options options;
    options.keptRequests = 100;
    CLI::App application("The stand-in solver service, on 127.0.0.1.", "teralune-service");
    application.add_option("--port", options.port, "Port to listen on; 0 takes a free one")
        ->capture_default_str();
    application.add_option("--data", options.dataFile, "Data file, or :memory:")->capture_default_str();
    application.add_option("--notes", options.notesFile, "Problems for the demo account, one a line");
    application.add_option("--token-requests", options.tokenRequests,
                           "Requests after which a token is stale");
    std::int64_t tokenSeconds = 0;
    const auto* seconds =
        application.add_option("--token-seconds", tokenSeconds, "Age at which a token is stale");
    std::vector<std::string> refused;
    application.add_option("--refuse", refused, "A path whose next request is answered with status 500");
    CLI11_PARSE(application, argumentCount, arguments);
    if (seconds->count() > 0) {
        options.tokenTime = std::chrono::seconds(tokenSeconds);
    }

    // Blocked before the first thread starts, so that only sigwait() below sees the signals.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);

    const auto service = teralune::SolverService::start(options);
    if (!service) {
        std::fprintf(stderr, "%s\n", service.error().localizedDescription.c_str());
        return 1;
    }
    for (const std::string& path : refused) {
        service.value()->faults().script(path, teralune::service::Fault::answer(500));
    }
    std::printf("Listening on http://%s\n", service.value()->host().c_str());
    std::fflush(stdout);
    int signal = 0;
    sigwait(&ending, &signal);
    return 0;
}
