#include "Classes/Model/NoteDataFinder.h"

#include "Classes/Interfaces/NetworkReachabilityType.h"
#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Classes/Model/CoreData/DataController.h"
#include "Classes/Model/SolutionStepsFetchingStrategy.h"
#include "Classes/Networking/Networking.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/TemporaryFolder.h"

#include <boost/json/object.hpp>
#include <gtest/gtest.h>

namespace teralune {
namespace {

struct FakeReachability final : NetworkReachabilityType {
    bool connected = false;
    bool hasInternetConnection() const override { return connected; }
    void setSnapshotMode() override {}
};

struct RecordingLogger final : LoggerType {
    std::vector<std::string> records;
    void resendCachedLogs() override {}
    void sendNextCachedLogs() override {}
    void logCachedSteps(const std::string& query, const std::optional<std::string>& topic,
                        Offline offline) override {
        records.push_back(query + "|" + topic.value_or("none") + (offline.value ? "|offline" : "|online"));
    }
};

/// Answers at once with what the test has put in, and keeps what it was asked.
struct FakeStrategy final : NoteFetchingStrategyType {
    FetchedNoteData answer;
    std::vector<std::string> asked;
    void fetchSingleNoteData(const std::string& query, ShouldLog shouldLogRequest, SolutionOrigin origin,
                             Completion completion) override {
        asked.push_back(query + "|" + std::string(word(origin)) + (shouldLogRequest.value ? "|log" : ""));
        completion(answer);
    }
};

struct NoteDataFinderTest : testing::Test {
    NoteDataFinderTest() {
        PlatformServices& services = application.fakePlatform.services;
        services.documentsDirectories = {documents.path()};
        // The store waits for this queue, so it needs a thread.
        services.defaultQueue = services.queuePool->makeConcurrentQueue("default");
        controller.emplace(application);
        application.dataControllerService = &*controller;
        application.networkReachabilityService = &reachability;
        application.loggerService = &logger;
    }

    /// Makes the notebook that many notes of one problem.
    NotebookEntryRepositoryType& notebook(std::size_t count, const std::string& problem, const char* topic) {
        boost::json::array notes;
        for (std::size_t i = 0; i < count; ++i) {
            notes.push_back({{"_id", std::to_string(i)},
                             {"problem", problem},
                             {"savedFrom", "Solutions"},
                             {"lastChange", "1"},
                             {"date", "2020-01-01T00:00:00.000Z"},
                             {"isFavorite", false},
                             {"tags", boost::json::array()}});
            if (topic)
                notes.back().as_object()["topic"] = topic;
        }
        NotebookEntryRepositoryType& repository = controller->notebookEntryRepository();
        repository.insertNotebookEntries(notes);
        return repository;
    }

    /// "steps|topic" of a success, or the message of a failure; "twice" when both came.
    std::string find(const std::string& noteQuery, ForceWeb forceWeb = {}) {
        std::vector<std::string> outcomes;
        finder.findData(
            "shown", noteQuery, forceWeb, SolutionOrigin::notebook,
            [&](std::string steps, std::optional<std::string> topic) {
                outcomes.push_back(steps + "|" + topic.value_or("none"));
            },
            [&](std::string message) { outcomes.push_back(std::move(message)); });
        return outcomes.size() == 1 ? outcomes.front() : outcomes.empty() ? "nothing" : "twice";
    }

    TemporaryFolder documents;
    FakeApplication application;
    FakeReachability reachability;
    RecordingLogger logger;
    std::optional<DataController> controller;
    FakeStrategy* strategy = new FakeStrategy;
    NoteDataFinder finder{application, std::unique_ptr<NoteFetchingStrategyType>(strategy)};
};

const std::string exceeded = "The limit of notes that can be opened offline has been reached.";
const std::string notYet = "The steps of this note have not been saved for offline use yet.";
const std::string noSteps = "No steps are available for this problem.";
const std::string noConnection = "There is no connection to the internet.";

TEST_F(NoteDataFinderTest, a_cached_note_opens_without_a_request_and_is_logged_with_the_connection_as_it_is) {
    notebook(1, "x=1", "Algebra").updateProblemWithSteps("x=1", "[cached]");
    EXPECT_EQ(find("x=1"), "[cached]|Algebra");
    reachability.connected = true;
    EXPECT_EQ(find("x=1"), "[cached]|Algebra");
    EXPECT_EQ(logger.records, (std::vector<std::string>{"shown|Algebra|online", "shown|Algebra|offline"}));
    EXPECT_TRUE(strategy->asked.empty());

    strategy->answer = {true, false, "[fresh]", std::nullopt};
    EXPECT_EQ(find("x=1", ForceWeb{true}), "[fresh]|none");
    EXPECT_EQ(logger.records.size(), 2U);
}

TEST_F(NoteDataFinderTest, a_failed_download_is_explained_by_why_it_was_tried_and_how_it_failed) {
    notebook(1, "x=1", nullptr);
    struct Case {
        const char* noteQuery;
        bool forceWeb;
        FetchedNoteData answer;
        std::string outcome;
    };
    const FetchedNoteData unanswered;
    const FetchedNoteData null{false, true, std::nullopt, std::nullopt};
    const Case cases[] = {
        {"x=1", false, {true, false, "[steps]", "Algebra"}, "[steps]|Algebra"},
        {"x=1", false, unanswered, notYet},
        {"unknown", false, null, notYet},
        {"x=1", false, {true, false, std::nullopt, std::nullopt}, notYet},
        {"x=1", true, null, noSteps},
        {"x=1", true, unanswered, noConnection},
        {"x=1", true, {false, false, "[partial]", std::nullopt}, noConnection},
    };
    for (const Case& each : cases) {
        strategy->answer = each.answer;
        EXPECT_EQ(find(each.noteQuery, ForceWeb{each.forceWeb}), each.outcome) << each.noteQuery;
    }
    EXPECT_EQ(strategy->asked, std::vector<std::string>(std::size(cases), "shown|notebook|log"));
    EXPECT_TRUE(logger.records.empty());
}

TEST_F(NoteDataFinderTest, a_full_cache_refuses_a_note_without_steps_at_once) {
    notebook(20'001, "many", nullptr).updateProblemWithSteps("many", "[cached]");
    EXPECT_EQ(find("other"), exceeded);
    EXPECT_TRUE(strategy->asked.empty());
    EXPECT_EQ(find("many"), "[cached]|none");
    EXPECT_EQ(find("other", ForceWeb{true}), noConnection);
}

TEST(SolutionStepsFetchingStrategy, hands_on_what_the_steps_endpoint_answers) {
    FakeApplication application;
    Networking networking(application, application.constants);
    application.networkingService = &networking;
    SolutionStepsFetchingStrategy strategy(application);
    const auto fetch = [&](const TransferOutcome& reply) {
        application.fakePlatform.transport->setScript([&](const URLRequest&) { return reply; });
        std::optional<FetchedNoteData> fetched;
        strategy.fetchSingleNoteData("x=1", ShouldLog{true}, SolutionOrigin::notebook,
                                     [&](FetchedNoteData data) { fetched = std::move(data); });
        application.run();
        return fetched.value();
    };
    const FetchedNoteData found = fetch(ScriptedTransport::reply(200, R"({"topic":"Algebra"})"));
    EXPECT_TRUE(found.success);
    EXPECT_EQ(found.steps, R"({"topic":"Algebra"})");
    EXPECT_EQ(found.topic, "Algebra");
    EXPECT_TRUE(fetch(ScriptedTransport::reply(200, "null")).isNull);
    const FetchedNoteData lost = fetch(ScriptedTransport::reply(500));
    EXPECT_FALSE(lost.success || lost.isNull || lost.steps || lost.topic);
}

} // namespace
} // namespace teralune
