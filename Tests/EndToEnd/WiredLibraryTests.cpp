#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Hosts/CommandLine/CommandLineApplication.h"
#include "Hosts/CommandLine/Synchronization.h"
#include "Hosts/CommandLine/Waiting.h"
#include "SolverService/Model/NoteRecord.h"
#include "SolverService/SolverService.h"
#include "Tests/Support/TemporaryFolder.h"

#include <boost/json/value_from.hpp>
#include <gtest/gtest.h>

namespace teralune {
namespace {

using service::Fault;
using Phase = NotebookSynchronizationJob::Phase;

/// The library with every service real, as the terminal's host wires it, and the service it talks to.
TEST(WiredLibraryTests, a_failed_list_download_keeps_the_notes_and_parks_the_job_until_the_next_start) {
    constexpr const char* listPath = "/api/notebookEntriesForMobileAll";
    constexpr const char* email = "ada@teralune.example";
    const TemporaryFolder folder;
    SolverService::Options serviceOptions;
    serviceOptions.demoAccount = SolverService::DemoAccount::none;
    const auto service = std::move(SolverService::start(std::move(serviceOptions)).value());
    std::unique_ptr<CommandLineApplication> application;
    // Begins anew, as after the process was ended.
    const auto start = [&] {
        application.reset();
        HostOptions options;
        options.dataFolder = folder.path();
        options.apiHost = service->host();
        options.plainHttp = true;
        application = std::move(CommandLineApplication::open(options).value());
    };
    start();
    const auto reply = waitFor<SignInReply>(*application->mainQueue(), [&](auto done) {
        application->networking().signupWith(email, "Ada", "L", "a password", std::move(done));
    });
    application->userAccountModel().consume(boost::json::value_from(reply.value()));
    application->settle();
    std::vector<service::NoteRecord> notes(2);
    notes[0].problem = "2x=4";
    notes[1].problem = "3x=9";
    ASSERT_TRUE(service->addNotes(email, notes));
    ASSERT_EQ(runSynchronization(*application), Phase::idle);

    const std::pair<const char*, Fault> faults[] = {
        {"an error status", Fault::answer(500)},
        {"no reply", Fault::hangUp()},
        {"half a list", Fault::cutBody()},
        {"no list", Fault::answer(200, R"({"notes":[]})", "application/json")},
        {"a list of other things", Fault::answer(200, "[1,2]", "application/json")}};
    for (const auto& [what, fault] : faults) {
        start();
        service->faults().script(listPath, fault);
        EXPECT_EQ(runSynchronization(*application), Phase::parked) << what;
        service->requestLog().clear();
        EXPECT_EQ(runSynchronization(*application), Phase::parked) << what;
        EXPECT_EQ(service->requestLog().count(listPath), 0U) << what;
        EXPECT_EQ(application->dataController().notebookEntryRepository().noteCount(), 2) << what;
    }
    start();
    EXPECT_EQ(runSynchronization(*application), Phase::idle);
}

} // namespace
} // namespace teralune
