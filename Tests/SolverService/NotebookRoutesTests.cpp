#include "SolverService/Model/NoteRecord.h"
#include "SolverService/Solver/EquationSolver.h"
#include "Tests/SolverService/ServiceClient.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using testing::Key;
using testing::UnorderedElementsAre;

const std::string room = "/api/notebook/";

/// A signed-in user with the demo notebook, on 2019-01-05 15:04:05 UTC.
class NotebookRoutes : public testing::Test {
protected:
    NotebookRoutes() { client.logIn(); }

    static SolverService::Options options() {
        SolverService::Options options;
        options.savedListLimit = 1;
        options.now = [] {
            return std::chrono::system_clock::time_point(std::chrono::seconds(1'546'700'645));
        };
        return options;
    }

    void clear() { client.post(room + "clearNotes"); }
    ClientReply add(const char* problem) {
        return client.post(
            room + "addNote",
            {{"problem", problem}, {"isMobile", "1"}, {"topic", "Algebra"}, {"savedFrom", "Solutions"}});
    }

    std::unique_ptr<SolverService> service = startService(options());
    ServiceClient client{*service};
};

TEST_F(NotebookRoutes, change_the_note_of_the_problem_and_no_other) {
    clear();
    EXPECT_EQ(client.get("/api/hasWebNotes").body, "false");
    EXPECT_TRUE(add("a=1").json().at("response").is_string());
    add("b 1");
    client.post(room + "updateNoteFavorite", {{"problem", "a=1"}, {"val", "true"}});
    client.post(room + "updateNoteNotes", {{"problem", "a=1"}, {"val", "half & half\n½"}});
    client.post(room + "setNoteTags",
                {{"problem", "a=1"}, {"tags", "one,two,one"}, {"removed", "two"}, {"added", "three"}});
    auto notebook = client.notebook();
    EXPECT_EQ(notebook.at("a=1").at("isFavorite"), true);
    EXPECT_EQ(notebook.at("a=1").at("notes"), "half & half\n½");
    EXPECT_EQ(notebook.at("a=1").at("tags"), (boost::json::array{"one", "three"}));
    EXPECT_FALSE(notebook.at("b 1").at("_id").as_string().empty());
    notebook.at("b 1").erase("_id");
    EXPECT_EQ(notebook.at("b 1"),
              boost::json::parse(R"({"problem":"b 1","savedFrom":"Solutions","lastChange":"1546700645000",
        "date":"Jan 05, 2019 03:04:05 PM","isFavorite":false,"topic":"Algebra","notes":"","graph":null,"url":null,
        "tags":[]})"));
    EXPECT_EQ(client.get("/api/hasWebNotes").body, "true");

    // A body that is larger than a form usually is.
    std::string problems = "a=1";
    for (int number = 0; number < 3'000; ++number) {
        problems += "\tmissing " + std::to_string(number);
    }
    EXPECT_EQ(client.post(room + "deleteNotes", {{"problems", problems + "\tb 1"}}).status, 200);
    EXPECT_TRUE(client.notebook().empty());
}

TEST_F(NotebookRoutes, refuse_what_no_client_should_send) {
    const std::tuple<const char*, Form, int> cases[] = {
        {"addNote", {{"savedFrom", "Solutions"}}, 400},
        {"addNote", {{"problem", "x=1"}, {"savedFrom", "Elsewhere"}}, 400},
        {"addNote", {{"problem", "x=\xFF"}, {"savedFrom", "Solutions"}}, 400},
        {"updateNoteFavorite", {{"problem", "3x-7=11"}, {"val", "1"}}, 400},
        {"updateNoteFavorite", {{"problem", "not there"}, {"val", "true"}}, 404},
        {"updateNoteNotes", {{"problem", "not there"}, {"val", "x"}}, 404},
        {"setNoteTags", {{"problem", "not there"}, {"tags", "x"}}, 404},
        {"saveGraph", {{"graphId", ""}, {"graphJson", "[1]"}}, 400},
        {"saveGraph", {{"graphId", ""}, {"graphJson", std::string(5'000, '[')}}, 400},
        {"saveList", {{"_id", "nothing"}}, 404},
        {"getList", {{"_id", "nothing"}}, 200},
    };
    const auto before = client.notebook();
    for (const auto& [path, form, status] : cases) {
        EXPECT_EQ(client.post(room + path, form).status, status) << path;
    }
    EXPECT_EQ(client.notebook(), before);
}

TEST_F(NotebookRoutes, keep_a_graph_under_its_identifier) {
    clear();
    const char* graph = R"({"functions":["x^2"],"zoom":2})";
    const boost::json::value saved =
        client.post(room + "saveGraph", {{"graphId", ""}, {"graphJson", graph}}).json();
    const std::string identifier = boost::json::value_to<std::string>(saved.at("graph"));
    EXPECT_EQ(client.notebook().at("x^2").at("graph"), boost::json::parse(graph));
    EXPECT_EQ(client.notebook().at("x^2").at("savedFrom"), "Graphing Calculator");

    client.post(room + "updateNoteFavorite", {{"problem", "x^2"}, {"val", "true"}});
    client.post(room + "saveGraph", {{"graphId", identifier}, {"graphJson", R"({"name":"Parabola"})"}});
    EXPECT_THAT(client.notebook(), UnorderedElementsAre(Key("Parabola")));
    EXPECT_EQ(client.notebook().at("Parabola").at("isFavorite"), true);
}

TEST_F(NotebookRoutes, show_a_shared_list_to_anyone_and_save_it_for_a_user) {
    clear();
    NoteRecord shared;
    shared.problem = "x=2";
    shared.tags = {"old"};
    const Form list = {{"_id", service->shareList("Exam \"A\"", {shared})}};
    const Form second = {{"_id", service->shareList("Another", {shared})}};
    const ServiceClient stranger(*service);
    const boost::json::value preview = stranger.post(room + "getList", list).json();
    EXPECT_EQ(preview.at("name"), "Exam \"A\"");
    EXPECT_EQ(preview.at("notes").at(0).at("problem"), "x=2");
    EXPECT_EQ(preview.at("notes").at(0).at("remoteID"), preview.at("notes").at(0).at("_id"));

    EXPECT_EQ(stranger.post(room + "saveList", list).status, 403);
    EXPECT_EQ(client.post(room + "saveList", list).json().at("extra"), false);
    EXPECT_EQ(client.notebook().at("x=2").at("tags"), (boost::json::array{"old", "Exam \"A\""}));
    clear();
    EXPECT_EQ(client.post(room + "saveList", second).json().at("extra"), true);
    EXPECT_TRUE(client.notebook().empty());
    EXPECT_EQ(client.post(room + "saveList", list).json().at("extra"), false);
    EXPECT_THAT(client.notebook(), UnorderedElementsAre(Key("x=2")));
}

TEST_F(NotebookRoutes, keep_every_users_notebook_apart) {
    ServiceClient other(*service);
    other.post("/mobileSignup", {{"email", "ann@b.cd"}, {"password", "secret1"}});
    other.logIn("ann@b.cd", "secret1");
    EXPECT_TRUE(other.notebook().empty());
    const auto before = client.notebook();
    EXPECT_EQ(other.post(room + "updateNoteNotes", {{"problem", "3x-7=11"}, {"val", "x"}}).status, 404);
    other.post(room + "deleteNotes", {{"problems", "3x-7=11"}});
    other.post(room + "clearNotes");
    EXPECT_EQ(client.notebook(), before);
}

TEST_F(NotebookRoutes, start_with_a_demo_notebook_whose_problems_are_solved) {
    const auto notebook = client.notebook();
    EXPECT_EQ(notebook.size(), 40U);
    std::size_t graphs = 0;
    for (const auto& [problem, record] : notebook) {
        const bool isGraph = record.at("savedFrom") == "Graphing Calculator";
        graphs += isGraph ? 1 : 0;
        EXPECT_EQ(isGraph, record.at("graph").is_object()) << problem;
        EXPECT_EQ(record.at("savedFrom") == "Practice", record.at("url").is_string()) << problem;
        EXPECT_NE(isGraph, solveEquation(problem).has_value()) << problem;
    }
    EXPECT_GE(graphs, 5U);

    const TemporaryFolder folder;
    SolverService::Options withFile;
    withFile.notesFile = folder.write("notes", "x=1\r\n\n  \n y=2\nlast");
    service = startService(withFile);
    client = ServiceClient(*service);
    client.logIn();
    EXPECT_EQ(client.notebook().size(), 43U);
    EXPECT_THAT(client.notebook(), testing::IsSupersetOf({Key("x=1"), Key(" y=2"), Key("last")}));
    withFile.notesFile = folder.write("notes", "caf\xE9\n");
    EXPECT_FALSE(SolverService::start(withFile));
}

} // namespace
} // namespace teralune::service
