#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Hosts/CommandLine/CommandLineApplication.h"
#include "Hosts/CommandLine/Synchronization.h"
#include "Hosts/CommandLine/Waiting.h"
#include "SolverService/Model/NoteRecord.h"
#include "SolverService/SolverService.h"
#include "Tests/Support/TemporaryFolder.h"

#include <boost/json/object.hpp>
#include <gmock/gmock.h>

namespace teralune {
namespace {

using namespace std::chrono_literals;
using service::Fault;
using testing::SizeIs;
using Phase = NotebookSynchronizationJob::Phase;

constexpr auto limit = 30s;
constexpr const char* listPath = "/api/notebookEntriesForMobileAll";
constexpr const char* email = "ada@teralune.example";

/// The library with every service real, as the terminal's host wires it, and the service it talks to.
class WiredLibraryTests : public testing::Test {
protected:
    WiredLibraryTests() {
        SolverService::Options options;
        options.demoAccount = SolverService::DemoAccount::none;
        service_ = std::move(SolverService::start(std::move(options)).value());
        start();
    }

    /// Begins anew, as after the process was ended.
    void start() {
        application_.reset();
        HostOptions options;
        options.dataFolder = folder_.path();
        options.apiHost = service_->host();
        options.plainHttp = true;
        application_ = std::move(CommandLineApplication::open(options).value());
    }

    void signUp(std::initializer_list<const char*> problems = {}) {
        const auto reply = waitFor<SignInReply>(*application_->mainQueue(), [this](auto done) {
            application_->networking().signupWith(email, "Ada", "L", "a password", std::move(done));
        });
        boost::json::object response;
        for (const auto& [key, value] : reply.value())
            response[key] = value;
        application_->userAccountModel().consume(boost::json::value(response));
        application_->settle();
        std::vector<service::NoteRecord> notes;
        for (const char* problem : problems)
            notes.emplace_back().problem = problem;
        ASSERT_TRUE(service_->addNotes(email, notes));
    }

    TemporaryFolder folder_;
    std::unique_ptr<SolverService> service_;
    std::unique_ptr<CommandLineApplication> application_;
};

TEST_F(WiredLibraryTests, three_requests_with_a_stale_token_share_one_refresh_and_all_succeed) {
    signUp({"2x=4"});
    const auto staleToken = application_->persistence().accessToken();
    service_->expireTokens();
    service_->requestLog().clear();
    // All three are on their way before the first is refused.
    const std::vector<std::string> paths = {"/api/hasWebNotes", listPath, "/api/user/info"};
    for (const std::string& path : paths)
        service_->faults().script(path, Fault::hold());
    int succeeded = 0;
    NetworkingType& networking = application_->networking();
    networking.hasWebNotes([&](bool hasNotes) { succeeded += hasNotes ? 1 : 0; });
    networking.getNotebookEntries([&](const auto& reply) { succeeded += reply.entries.size() == 1 ? 1 : 0; });
    networking.getUserData([&](const auto& user) { succeeded += user ? 1 : 0; });
    ASSERT_TRUE(service_->faults().waitForHeld(3, limit));
    service_->faults().release();
    ASSERT_TRUE(application_->mainQueue()->runUntil([&] { return succeeded == 3; }, limit));

    const auto requests = service_->requestLog().requests();
    ASSERT_THAT(requests, SizeIs(7));
    EXPECT_EQ(requests[3].path(), "/refresh");
    for (const std::string& path : paths) {
        const auto attempts = service_->requestLog().requestsTo(path);
        ASSERT_THAT(attempts, SizeIs(2)) << path;
        EXPECT_EQ(attempts[0].cookie("tq.token"), staleToken) << path;
        EXPECT_EQ(attempts[1].cookie("tq.token"), application_->persistence().accessToken()) << path;
        EXPECT_EQ(attempts[1].body, attempts[0].body) << path;
    }
}

TEST_F(WiredLibraryTests, a_failed_list_download_keeps_the_notes_and_parks_the_job_until_the_next_start) {
    signUp({"2x=4", "3x=9"});
    ASSERT_EQ(runSynchronization(*application_), Phase::idle);
    const struct {
        const char* what;
        Fault fault;
    } faults[] = {{"an error status", Fault::answer(500)},
                  {"no reply", Fault::hangUp()},
                  {"half a list", Fault::cutBody()},
                  {"no list", Fault::answer(200, R"({"notes":[]})", "application/json")},
                  {"a list of other things", Fault::answer(200, "[1,2]", "application/json")}};
    for (const auto& [what, fault] : faults) {
        start();
        service_->faults().script(listPath, fault);
        EXPECT_EQ(runSynchronization(*application_), Phase::parked) << what;
        service_->requestLog().clear();
        EXPECT_EQ(runSynchronization(*application_), Phase::parked) << what;
        EXPECT_EQ(service_->requestLog().count(listPath), 0U) << what;
        EXPECT_EQ(application_->dataController().notebookEntryRepository().noteCount(), 2) << what;
    }
    start();
    EXPECT_EQ(runSynchronization(*application_), Phase::idle);
}

} // namespace
} // namespace teralune
