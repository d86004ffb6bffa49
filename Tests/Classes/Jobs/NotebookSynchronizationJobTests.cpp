#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Classes/Jobs/NotebookSynchronizationJob.h"
#include "Tests/Support/FakeStoreApplication.h"

#include <boost/json/parse.hpp>
#include <gmock/gmock.h>

#include <thread>

namespace teralune {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const char* const listPath = "/api/notebookEntriesForMobileAll";
const char* const steps = R"({"subject":"Algebra"})";

std::string note(int number, const char* savedFrom = "Solutions") {
    return R"({"_id":"id)" + std::to_string(number) + R"(","problem":"x=)" + std::to_string(number) +
           R"(","savedFrom":")" + savedFrom + R"(","lastChange":"-","date":"Jan 0)" + std::to_string(number) +
           R"(, 2019 03:04:05 PM"})";
}

class SynchronizationJob : public testing::Test {
protected:
    SynchronizationJob() {
        application.notebookSynchronizationJobService = &job;
        application.fakeUserAccountModel.signIn("c1", "t1");
        observation = application.fakePlatform.notificationCenter->observe(
            std::string(NotebookSynchronizationJob::NotebookSynchronizationComplete),
            [this](const Notification&) {
                ++mergesAnnounced;
                phaseWhenAnnounced = job.phase();
            });
    }

    void start() {
        job.runSynchronizationJob();
        application.run();
    }
    /// The requests of the synchronization, without the usage records that go with them.
    std::vector<std::string> asked() {
        std::vector<std::string> targets;
        for (const std::string& target : host.sent()) {
            if (target == listPath || target.starts_with("/pub_api/steps"))
                targets.push_back(target);
        }
        return targets;
    }
    /// Answers the request that the job is waiting for.
    void answer(int status, const std::string& body) {
        const auto sent = host.sent();
        for (std::size_t index = sent.size(); index-- > 0;) {
            if (sent[index] == listPath || sent[index].starts_with("/pub_api/steps")) {
                host.answer(index, status, body);
                return;
            }
        }
    }
    std::optional<std::string> storedSteps(const std::string& problem) {
        const auto entry = repository().getNotebookEntry(problem);
        if (!entry || !entry->contains("stepsData"))
            return std::nullopt;
        return std::get<std::string>(entry->at("stepsData"));
    }
    NotebookEntryRepositoryType& repository() { return host.dataController->notebookEntryRepository(); }

    FakeStoreApplication host;
    FakeApplication& application = host.application;
    NotebookSynchronizationJob job{application};
    Observation observation;
    int mergesAnnounced = 0;
    NotebookSynchronizationJob::Phase phaseWhenAnnounced = NotebookSynchronizationJob::Phase::idle;
    using Phase = NotebookSynchronizationJob::Phase;
};

TEST_F(SynchronizationJob, merges_the_list_and_then_fetches_steps_one_at_a_time_newest_first) {
    start();
    job.runSynchronizationJob();
    application.run();
    EXPECT_THAT(asked(), ElementsAre(listPath)) << "one list at a time";
    answer(200, "[" + note(1) + "," + note(3, "Graphing Calculator") + "," + note(2, "Practice") + "]");
    EXPECT_EQ(repository().noteCount(), 3);
    EXPECT_EQ(mergesAnnounced, 1);
    EXPECT_EQ(phaseWhenAnnounced, Phase::listing);
    EXPECT_EQ(job.phase(), Phase::caching);
    EXPECT_THAT(asked(), ElementsAre(listPath, AllOf(StartsWith("/pub_api/steps?query=x=2&"),
                                                     HasSubstr("&userId=nolog&origin=notebookcache"))));
    answer(200, steps);
    EXPECT_EQ(storedSteps("x=2"), steps);
    ASSERT_EQ(asked().size(), 3U);
    EXPECT_THAT(asked().back(), StartsWith("/pub_api/steps?query=x=1&"));
    answer(200, steps);
    EXPECT_EQ(storedSteps("x=1"), steps);
    EXPECT_EQ(asked().size(), 3U) << "graphs have no steps";
    EXPECT_EQ(job.phase(), Phase::idle);
    job.waitForCompletion();

    // A second run finds nothing to cache and is announced all the same.
    start();
    job.waitForCompletion();
    answer(200, "[" + note(1) + "]");
    EXPECT_EQ(mergesAnnounced, 2);
    EXPECT_EQ(repository().noteCount(), 1);
    EXPECT_EQ(storedSteps("x=1"), steps);
    EXPECT_EQ(job.phase(), Phase::idle);
}

TEST_F(SynchronizationJob, a_signed_out_user_causes_no_request) {
    application.settings.logout();
    start();
    EXPECT_TRUE(host.sent().empty());
    EXPECT_EQ(job.phase(), Phase::idle);
    application.fakeUserAccountModel.signIn("c1", "t1");
    start();
    EXPECT_THAT(asked(), ElementsAre(listPath));
}

TEST_F(SynchronizationJob,
       an_answer_without_steps_ends_the_phase_and_the_next_run_begins_with_the_same_problem) {
    for (const auto& [status, body] : {std::pair(200, "null"), std::pair(200, ""), std::pair(500, "oops")}) {
        start();
        answer(200, "[" + note(1) + "," + note(2) + "]");
        EXPECT_THAT(asked().back(), StartsWith("/pub_api/steps?query=x=2&"));
        answer(status, body);
        EXPECT_EQ(job.phase(), Phase::idle);
    }
}

TEST_F(SynchronizationJob, a_failed_list_download_keeps_the_notes_and_parks_the_job_for_good) {
    repository().insertNotebookEntries(boost::json::parse("[" + note(1) + "]").as_array());
    for (const auto& [status, body] : {std::pair(500, "[]"), std::pair(200, R"({"notes":[]})"),
                                       std::pair(200, "[1,2]"), std::pair(200, "[{")}) {
        NotebookSynchronizationJob next{application};
        next.runSynchronizationJob();
        application.run();
        answer(status, body);
        const std::size_t askedBefore = asked().size();
        next.runSynchronizationJob();
        application.run();
        EXPECT_EQ(next.phase(), Phase::parked) << body;
        EXPECT_EQ(asked().size(), askedBefore) << body;
        EXPECT_EQ(repository().noteCount(), 1) << body;
    }
}

TEST_F(SynchronizationJob, a_stop_lets_the_step_in_flight_be_stored_and_ends_the_phase) {
    start();
    answer(200, "[" + note(1) + "," + note(2) + "]");
    std::thread waiting([this] { job.waitForCompletion(); });
    job.stopJob();
    EXPECT_EQ(job.phase(), Phase::caching);
    answer(200, steps);
    waiting.join();
    EXPECT_EQ(storedSteps("x=2"), steps);
    EXPECT_EQ(storedSteps("x=1"), std::nullopt);
    EXPECT_EQ(job.phase(), Phase::idle);

    start();
    answer(200, "[" + note(1) + "," + note(2) + "]");
    EXPECT_THAT(asked().back(), StartsWith("/pub_api/steps?query=x=1&")) << "a new run takes the stop back";
}

TEST_F(SynchronizationJob, a_note_without_a_text_is_asked_for_like_any_other) {
    start();
    answer(
        200,
        R"([{"_id":"1","problem":"","savedFrom":"Solutions","lastChange":"","date":"Jan 05, 2019 03:04:05 PM"}])");
    EXPECT_THAT(asked().back(), StartsWith("/pub_api/steps?query=&"));
}

TEST_F(SynchronizationJob, others_ask_for_a_run_by_a_notification) {
    application.fakePlatform.notificationCenter->post(
        {std::string(NotebookSynchronizationJob::RunSynchronizationJobNotification), {}, {}});
    application.run();
    EXPECT_THAT(asked(), ElementsAre(listPath));
}

TEST_F(SynchronizationJob, its_end_leaves_no_work_behind) {
    auto ending = std::make_unique<NotebookSynchronizationJob>(application);
    ending->runSynchronizationJob();
    application.fakePlatform.httpDelegateQueue->runAll();
    application.fakePlatform.transport->answer(0, ScriptedTransport::reply(200, "[" + note(1) + "]"));
    application.fakePlatform.httpDelegateQueue->runAll();
    application.fakePlatform.mainQueue->runAll();
    ending.reset();
    application.run();
    EXPECT_EQ(repository().noteCount(), 0) << "the merge had not begun";
}

TEST_F(SynchronizationJob, what_was_asked_for_one_user_is_not_taken_for_the_next) {
    start();
    application.fakeUserAccountModel.signIn("c2", "t2");
    answer(200, "[" + note(1) + "]");
    EXPECT_EQ(repository().noteCount(), 0);
    EXPECT_THAT(asked(), ElementsAre(listPath, listPath)) << "theirs is fetched instead";
    answer(200, "[" + note(1) + "," + note(2) + "]");
    const std::size_t late = host.sent().size() - 1;
    application.settings.logout();
    start();
    EXPECT_EQ(job.phase(), Phase::idle);
    application.fakeUserAccountModel.signIn("c2", "t2");
    start();
    answer(200, "[" + note(1) + "," + note(2) + "]");
    const std::size_t count = asked().size();
    host.answer(late, 200, steps);
    EXPECT_EQ(asked().size(), count) << "one step at a time";
    EXPECT_EQ(job.phase(), Phase::caching);
}

TEST_F(SynchronizationJob, a_list_that_arrives_while_steps_are_fetched_is_merged_beside_them) {
    start();
    answer(200, "[" + note(1) + "]");
    const std::size_t stepsRequest = host.sent().size() - 1;
    start();
    answer(200, "[" + note(1) + "," + note(2) + "]");
    EXPECT_EQ(repository().noteCount(), 2);
    EXPECT_EQ(job.phase(), Phase::caching);
    EXPECT_EQ(asked().size(), 3U) << "the running step phase goes on by itself";
    host.answer(stepsRequest, 200, steps);
    EXPECT_THAT(asked().back(), StartsWith("/pub_api/steps?query=x=2&"));
}

} // namespace
} // namespace teralune
