#include "SolverService/SolverService.h"

#include "SolverService/Http/HttpListener.h"
#include "SolverService/Http/Router.h"
#include "SolverService/Model/Accounts.h"
#include "SolverService/Model/DemoNotebook.h"
#include "SolverService/Model/Notebook.h"
#include "SolverService/Model/RandomText.h"
#include "SolverService/Model/SharedLists.h"
#include "SolverService/Model/Suggestions.h"
#include "SolverService/Model/Tokens.h"
#include "SolverService/Model/UsageRecords.h"
#include "SolverService/Routes/Routes.h"

#include <algorithm>

namespace teralune {

namespace {

constexpr int playSessionBytes = 16;

/// The session cookie of a reply: the client's own when it has one of ours, otherwise a new one.
std::string playSession(const service::ReceivedRequest& request) {
    const std::string known = request.cookie("PLAY_SESSION").value_or(std::string());
    const bool ours = known.size() == 2UL * playSessionBytes &&
                      known.find_first_not_of("0123456789abcdef") == std::string::npos;
    return ours ? known : service::randomText(playSessionBytes);
}

} // namespace

struct SolverService::State {
    State(std::unique_ptr<service::ServerModel> opened, const Options& options)
        : model(std::move(opened))
        , accounts(*model)
        , tokens(*model, service::TokenLifetime{options.tokenRequests, options.tokenTime})
        , notebook(*model)
        , lists(*model, notebook, options.savedListLimit)
        , usage(*model)
        , suggestions(*model)
        , identity(options.now)
        , log(options.keptRequests)
        , routes(service::Routes::Model{accounts, tokens, notebook, lists, usage, suggestions, identity})
        , router(tokens) {
        routes.enter(router);
    }

    std::unique_ptr<service::ServerModel> model;
    service::Accounts accounts;
    service::Tokens tokens;
    service::Notebook notebook;
    service::SharedLists lists;
    service::UsageRecords usage;
    service::Suggestions suggestions;
    service::IdentityProvider identity;
    service::Faults faults;
    service::RequestLog log;
    service::Routes routes;
    service::Router router;
    std::unique_ptr<service::HttpListener> listener;

    Result<void> seed(const Options& options) {
        std::optional<std::int64_t> demo = accounts.idOf(service::demoEmail);
        if (!demo && options.demoAccount == DemoAccount::seeded) {
            const Result<std::int64_t> made =
                accounts.signUp(service::demoEmail, "Dana", "Demo", service::demoPassword);
            if (!made) {
                return made.error();
            }
            demo = made.value();
            notebook.add(*demo, service::demoNotes(model->nowSeconds()));
        }
        if (options.notesFile.empty() || !demo) {
            return {};
        }
        const Result<std::vector<service::NoteRecord>> notes = service::notesFromFile(options.notesFile);
        if (!notes) {
            return notes.error();
        }
        notebook.add(*demo, notes.value());
        return {};
    }

    service::Answer exchange(const service::ReceivedRequest& request) {
        log.record(request);
        service::Answer answer;
        const std::optional<service::Fault> fault = faults.take(request.path());
        if (fault) {
            faults.pause(*fault);
            answer.ending = fault->ending;
        }
        answer.reply = fault && fault->reply ? *fault->reply : router.route(request);
        answer.reply.headers.emplace_back("Set-Cookie", "PLAY_SESSION=" + playSession(request) + "; Path=/");
        return answer;
    }
};

SolverService::SolverService(std::unique_ptr<State> state) : state_(std::move(state)) {}

SolverService::~SolverService() {
    stop();
}

Result<std::unique_ptr<SolverService>> SolverService::start(const Options& options) {
    auto model = service::ServerModel::open(options.dataFile, options.now);
    if (!model) {
        return model.error();
    }
    std::unique_ptr<State> state;
    try {
        state = std::make_unique<State>(std::move(model).value(), options);
        if (const Result<void> seeded = state->seed(options); !seeded) {
            return seeded.error();
        }
    } catch (const std::exception& exception) {
        return Error{
            "TeraluneSolverService", 0, options.dataFile + " can't be used: " + exception.what(), {}};
    }
    State& running = *state;
    auto listener = service::HttpListener::start(
        options.port, options.bodyLimit,
        [&running](const service::ReceivedRequest& request) { return running.exchange(request); });
    if (!listener) {
        return listener.error();
    }
    state->listener = std::move(listener).value();
    return std::unique_ptr<SolverService>(new SolverService(std::move(state)));
}

void SolverService::stop() {
    // In this order, so that nothing that is held or delayed still gets its reply out.
    state_->listener->closeConnections();
    state_->faults.stop();
    state_->listener->stop();
}

std::string SolverService::host() const {
    return "127.0.0.1:" + std::to_string(port());
}

std::uint16_t SolverService::port() const {
    return state_->listener->port();
}

service::Faults& SolverService::faults() {
    return state_->faults;
}

service::RequestLog& SolverService::requestLog() {
    return state_->log;
}

service::IdentityProvider& SolverService::identityProvider() {
    return state_->identity;
}

void SolverService::expireTokens() {
    state_->tokens.expireAll();
}

void SolverService::rejectRefresh() {
    state_->tokens.endAll();
}

std::string SolverService::shareList(const std::string& name, const std::vector<service::NoteRecord>& notes) {
    return state_->lists.share(name, notes);
}

bool SolverService::addNotes(const std::string& email, const std::vector<service::NoteRecord>& notes) {
    const std::optional<std::int64_t> account = state_->accounts.idOf(email);
    if (account) {
        state_->notebook.add(*account, notes);
    }
    return account.has_value();
}

std::vector<service::NoteRecord> SolverService::notes(const std::string& email) {
    const std::optional<std::int64_t> account = state_->accounts.idOf(email);
    return account ? state_->notebook.notes(*account) : std::vector<service::NoteRecord>();
}

std::vector<service::Parameters> SolverService::usageRecords(std::string_view path) {
    return state_->usage.records(path);
}

} // namespace teralune
