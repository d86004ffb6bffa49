#include "Classes/Model/NoteDataFinder.h"

#include "Classes/Interfaces/NetworkReachabilityType.h"
#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Classes/Model/SolutionStepsFetchingStrategy.h"
#include "Tests/Support/FakeStoreApplication.h"

#include <boost/json/object.hpp>
#include <gtest/gtest.h>

namespace teralune {
namespace {

/// What the finder meets beside the notebook: a connection, a log, and a server that answers at once.
struct Surroundings final : NetworkReachabilityType, LoggerType, NoteFetchingStrategyType {
    bool hasInternetConnection() const override { return connected; }
    void setSnapshotMode() override {}
    void resendCachedLogs() override {}
    void sendNextCachedLogs() override {}
    void logCachedSteps(const std::string& query, const std::optional<std::string>& topic,
                        Offline offline) override {
        events += "log " + query + " " + topic.value_or("-") + (offline.value ? " offline" : " online");
    }
    void fetchSingleNoteData(const std::string& query, ShouldLog shouldLogRequest, SolutionOrigin origin,
                             Completion completion) override {
        events +=
            "ask " + query + " " + std::string(word(origin)) + (shouldLogRequest.value ? " logged" : "");
        completion(answer);
    }
    bool connected = false;
    FetchedNoteData answer;
    std::string events;
};

struct NoteDataFinderTest : testing::Test {
    NoteDataFinderTest() {
        application.networkReachabilityService = surroundings;
        application.loggerService = surroundings;
    }
    /// Fills the notebook with so many notes of one problem, whose steps are cached.
    void cache(std::size_t count, const std::string& problem) {
        boost::json::array notes;
        for (std::size_t i = 0; i < count; ++i) {
            notes.push_back({{"_id", std::to_string(i)},
                             {"problem", problem},
                             {"savedFrom", "Solutions"},
                             {"lastChange", "1"},
                             {"date", ""},
                             {"topic", "Algebra"}});
        }
        NotebookEntryRepositoryType& repository = host.dataController->notebookEntryRepository();
        repository.insertNotebookEntries(notes);
        repository.updateProblemWithSteps(problem, "[cached]");
    }
    /// "steps|topic" of a success or the message of a failure; both of them, should both come.
    std::string find(const std::string& noteQuery, ForceWeb forceWeb = {}) {
        std::string outcome;
        finder.findData(
            "shown", noteQuery, forceWeb, SolutionOrigin::notebook,
            [&](const std::string& steps, const std::optional<std::string>& topic) {
                outcome += steps + "|" + topic.value_or("none");
            },
            [&](const std::string& message) { outcome += message; });
        return outcome;
    }

    FakeStoreApplication host;
    FakeApplication& application = host.application;
    Surroundings* surroundings = new Surroundings;
    NoteDataFinder finder{application, std::unique_ptr<NoteFetchingStrategyType>(surroundings)};
};

TEST_F(NoteDataFinderTest, takes_the_cache_or_asks_the_server_and_explains_a_failure) {
    const std::string notYet = "The steps of this note have not been saved for offline use yet.";
    const std::string noConnection = "There is no connection to the internet.";
    const FetchedNoteData lost;
    const FetchedNoteData null{false, true, std::nullopt, std::nullopt};
    const FetchedNoteData steps{true, false, "[steps]", "Geometry"};
    const std::string asked = "ask shown notebook logged";
    const std::tuple<const char*, bool, bool, FetchedNoteData, std::string, std::string> cases[] = {
        {"cached", false, false, lost, "log shown Algebra online", "[cached]|Algebra"},
        {"cached", false, true, lost, "log shown Algebra offline", "[cached]|Algebra"},
        {"cached", true, true, steps, asked, "[steps]|Geometry"},
        {"other", false, true, steps, asked, "[steps]|Geometry"},
        {"other", false, true, lost, asked, notYet},
        {"other", false, true, null, asked, notYet},
        {"other", true, true, null, asked, "No steps are available for this problem."},
        {"other", true, true, lost, asked, noConnection},
        {"other", true, true, {false, false, "[partial]", std::nullopt}, asked, noConnection},
    };
    cache(1, "cached");
    for (const auto& [noteQuery, forceWeb, connected, answer, events, outcome] : cases) {
        surroundings->answer = answer;
        surroundings->connected = connected;
        EXPECT_EQ(find(noteQuery, ForceWeb{forceWeb}), outcome);
        EXPECT_EQ(std::exchange(surroundings->events, {}), events);
    }
}

TEST_F(NoteDataFinderTest, a_full_cache_refuses_a_note_without_steps_at_once) {
    cache(20'001, "many");
    EXPECT_EQ(find("other"), "The limit of notes that can be opened offline has been reached.");
    EXPECT_EQ(surroundings->events, "");
}

TEST(SolutionStepsFetchingStrategy, hands_on_what_the_steps_endpoint_answers) {
    FakeStoreApplication host;
    FakeApplication& application = host.application;
    const auto fetch = [&](const TransferOutcome& reply) {
        application.fakePlatform.transport->setScript([&](const URLRequest&) { return reply; });
        std::optional<FetchedNoteData> fetched;
        SolutionStepsFetchingStrategy(application)
            .fetchSingleNoteData("x=1", ShouldLog{true}, SolutionOrigin::notebook,
                                 [&](FetchedNoteData data) { fetched = std::move(data); });
        application.run();
        return fetched.value();
    };
    const FetchedNoteData found = fetch(ScriptedTransport::reply(200, R"({"topic":"Algebra"})"));
    EXPECT_TRUE(found.success && found.steps == R"({"topic":"Algebra"})" && found.topic == "Algebra");
    EXPECT_TRUE(fetch(ScriptedTransport::reply(200, "null")).isNull);
    EXPECT_FALSE(fetch(ScriptedTransport::reply(500)).success);
}

} // namespace
} // namespace teralune
