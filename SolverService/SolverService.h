#pragma once

#include "Platform/Foundation/Result.h"
#include "SolverService/Faults.h"
#include "SolverService/IdentityProvider.h"
#include "SolverService/RequestLog.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teralune {

namespace service {
struct NoteRecord;
}

/// The stand-in for the solver service: a real HTTP server on 127.0.0.1 that keeps accounts, tokens and
/// notebooks, solves equations, and never trusts what a client sends. Hosts start it in their own
/// process when they have no server to talk to; tests start it, script what goes wrong, and read what it
/// received. It runs on its own threads; every operation may be called from any thread.
class SolverService {
public:
    enum class DemoAccount {
        /// demo@teralune.example with the password "teralune" and a notebook of textbook problems.
        seeded,
        none,
    };

    struct Options {
        /// 0 takes any free port.
        std::uint16_t port = 0;
        /// Where accounts and notebooks are kept; ":memory:" forgets them when the service ends.
        std::string dataFile = ":memory:";
        /// A text file of problems, one a line, that the demo account's notebook gets; empty for none.
        std::string notesFile;
        DemoAccount demoAccount = DemoAccount::seeded;

        /// After so many requests, and after so much time, an access token is stale; absent for never.
        std::optional<std::int64_t> tokenRequests;
        std::optional<std::chrono::seconds> tokenTime;

        /// Larger request bodies are answered with 413.
        std::size_t bodyLimit = 8UL * 1024 * 1024;
        /// How many shared lists a user may take into the notebook.
        std::int64_t savedListLimit = 20;
        /// How many requests the log keeps.
        std::size_t keptRequests = 10'000;
        /// What time it is. Decides the age of tokens and the dates of notes.
        std::function<std::chrono::system_clock::time_point()> now = std::chrono::system_clock::now;
    };

    /// Fails when the port can't be had, or when the data or the notes file can't be read.
    static Result<std::unique_ptr<SolverService>> start(const Options& options);
    /// Stops.
    ~SolverService();

    /// Ends every connection, held and delayed requests included, and joins all threads.
    void stop();

    /// "127.0.0.1:PORT", as a client is told where its service is.
    std::string host() const;
    std::uint16_t port() const;

    /// What goes wrong, and what came in.
    service::Faults& faults();
    service::RequestLog& requestLog();
    /// Who signs in through another provider.
    service::IdentityProvider& identityProvider();

    /// Makes every token issued so far stale: 403 until the client has refreshed it.
    void expireTokens();
    /// Ends every session, as when all users were signed out elsewhere: 403, and a refresh is refused too.
    void rejectRefresh();

    /// Shares the notes under a name; the identifier that opens the list.
    std::string shareList(const std::string& name, const std::vector<service::NoteRecord>& notes);
    /// Adds notes to the notebook of the user with that e-mail address; false when there is none.
    bool addNotes(const std::string& email, const std::vector<service::NoteRecord>& notes);
    /// The notes of that user as the service has them now, newest change first.
    std::vector<service::NoteRecord> notes(const std::string& email);
    /// What clients reported to one of the log paths, oldest first.
    std::vector<service::Parameters> usageRecords(std::string_view path);

private:
    struct State;
    explicit SolverService(std::unique_ptr<State> state);

    std::unique_ptr<State> state_;
};

} // namespace teralune
