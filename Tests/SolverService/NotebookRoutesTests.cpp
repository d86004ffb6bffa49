#include "SolverService/Model/NoteRecord.h"
#include "SolverService/Solver/EquationSolver.h"
#include "Tests/SolverService/ServiceClient.h"

#include <fstream>
#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using testing::Key;
using testing::UnorderedElementsAre;

/// A signed-in user with an empty notebook, on 2019-01-05 15:04:05 UTC.
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

    void clear() { client.post("/api/notebook/clearNotes"); }
    ClientReply add(const std::string& problem) {
        return client.post("/api/notebook/addNote", {{"problem", problem},
                                                     {"isMobile", "1"},
                                                     {"isNotebook", "1"},
                                                     {"topic", "Algebra"},
                                                     {"savedFrom", "Solutions"}});
    }

    std::unique_ptr<SolverService> service = startService(options());
    ServiceClient client{*service};
};

TEST_F(NotebookRoutes, send_every_key_of_a_note) {
    clear();
    EXPECT_TRUE(add("x+1=2").json().at("response").is_string());
    boost::json::object record = client.notebook().at("x+1=2");
    EXPECT_FALSE(record.at("_id").as_string().empty());
    record.erase("_id");
    EXPECT_EQ(record,
              boost::json::parse(R"({"problem":"x+1=2","savedFrom":"Solutions","lastChange":"1546700645000",
        "date":"Jan 05, 2019 03:04:05 PM","isFavorite":false,"topic":"Algebra","notes":"","graph":null,"url":null,
        "tags":[]})"));
}

TEST_F(NotebookRoutes, change_the_note_of_the_problem_and_no_other) {
    clear();
    add("a=1");
    add("b=1");
    client.post("/api/notebook/updateNoteFavorite", {{"problem", "a=1"}, {"val", "true"}});
    client.post("/api/notebook/updateNoteNotes", {{"problem", "a=1"}, {"val", "half & half\n½"}});
    client.post("/api/notebook/setNoteTags",
                {{"problem", "a=1"}, {"tags", "one,two,one"}, {"removed", "two"}, {"added", "three"}});
    const auto notebook = client.notebook();
    EXPECT_EQ(notebook.at("a=1").at("isFavorite"), true);
    EXPECT_EQ(notebook.at("a=1").at("notes"), "half & half\n½");
    EXPECT_EQ(notebook.at("a=1").at("tags"), (boost::json::array{"one", "three"}));
    EXPECT_EQ(notebook.at("b=1").at("isFavorite"), false);
    EXPECT_EQ(notebook.at("b=1").at("tags"), boost::json::array());
}

TEST_F(NotebookRoutes, delete_all_problems_of_a_tab_separated_list) {
    clear();
    EXPECT_EQ(client.get("/api/hasWebNotes").body, "false");
    add("a");
    add("b c");
    add("d");
    client.post("/api/notebook/deleteNotes", {{"problems", "a\tb c\tmissing"}});
    EXPECT_THAT(client.notebook(), UnorderedElementsAre(Key("d")));
    EXPECT_EQ(client.get("/api/hasWebNotes").body, "true");
}

TEST_F(NotebookRoutes, take_bodies_that_are_larger_than_a_form_usually_is) {
    std::string problems;
    for (int number = 0; number < 3'000; ++number) {
        problems += (number == 0 ? "" : "\t") + std::string("missing ") + std::to_string(number);
    }
    EXPECT_EQ(client.post("/api/notebook/deleteNotes", {{"problems", problems + "\t3x-7=11"}}).status, 200);
    EXPECT_FALSE(client.notebook().contains("3x-7=11"));
}

TEST_F(NotebookRoutes, refuse_what_no_client_should_send) {
    const struct {
        const char* path;
        Form form;
        int status;
    } cases[] = {
        {"/api/notebook/addNote", {{"savedFrom", "Solutions"}}, 400},
        {"/api/notebook/addNote", {{"problem", "x=1"}, {"savedFrom", "Elsewhere"}}, 400},
        {"/api/notebook/addNote", {{"problem", "x=\xFF"}, {"savedFrom", "Solutions"}}, 400},
        {"/api/notebook/updateNoteFavorite", {{"problem", "3x-7=11"}, {"val", "1"}}, 400},
        {"/api/notebook/updateNoteFavorite", {{"problem", "not there"}, {"val", "true"}}, 404},
        {"/api/notebook/updateNoteNotes", {{"problem", "not there"}, {"val", "x"}}, 404},
        {"/api/notebook/setNoteTags", {{"problem", "not there"}, {"tags", "x"}}, 404},
        {"/api/notebook/saveGraph", {{"graphId", ""}, {"graphJson", "[1]"}}, 400},
        {"/api/notebook/saveGraph", {{"graphId", ""}, {"graphJson", std::string(5'000, '[')}}, 400},
        {"/api/notebook/saveList", {{"_id", "nothing"}}, 404},
        {"/api/notebook/getList", {{"_id", "nothing"}}, 200},
    };
    const std::size_t before = client.notebook().size();
    for (const auto& each : cases) {
        EXPECT_EQ(client.post(each.path, each.form).status, each.status) << each.path;
    }
    EXPECT_EQ(client.notebook().size(), before);
}

TEST_F(NotebookRoutes, keep_a_graph_under_its_identifier) {
    clear();
    const boost::json::value saved =
        client
            .post("/api/notebook/saveGraph",
                  {{"graphId", ""}, {"graphJson", R"({"functions":["x^2"],"zoom":2})"}})
            .json();
    const std::string identifier = boost::json::value_to<std::string>(saved.at("graph"));
    EXPECT_EQ(client.notebook().at("x^2").at("graph"),
              boost::json::parse(R"({"functions":["x^2"],"zoom":2})"));
    EXPECT_EQ(client.notebook().at("x^2").at("savedFrom"), "Graphing Calculator");

    client.post("/api/notebook/updateNoteFavorite", {{"problem", "x^2"}, {"val", "true"}});
    client.post("/api/notebook/saveGraph",
                {{"graphId", identifier}, {"graphJson", R"({"name":"Parabola"})"}});
    EXPECT_THAT(client.notebook(), UnorderedElementsAre(Key("Parabola")));
    EXPECT_EQ(client.notebook().at("Parabola").at("isFavorite"), true);
}

TEST_F(NotebookRoutes, show_a_shared_list_to_anyone_and_save_it_for_a_user) {
    clear();
    NoteRecord shared;
    shared.problem = "x=2";
    shared.tags = {"old"};
    const std::string list = service->shareList("Exam \"A\"", {shared});
    const std::string second = service->shareList("Another", {shared});

    const boost::json::value preview =
        ServiceClient(*service).post("/api/notebook/getList", {{"_id", list}}).json();
    EXPECT_EQ(preview.at("name"), "Exam \"A\"");
    EXPECT_EQ(preview.at("notes").at(0).at("problem"), "x=2");
    EXPECT_EQ(preview.at("notes").at(0).at("remoteID"), preview.at("notes").at(0).at("_id"));

    EXPECT_EQ(ServiceClient(*service).post("/api/notebook/saveList", {{"_id", list}}).status, 403);
    EXPECT_EQ(client.post("/api/notebook/saveList", {{"_id", list}}).json().at("extra"), false);
    EXPECT_EQ(client.notebook().at("x=2").at("tags"), (boost::json::array{"old", "Exam \"A\""}));
    clear();
    EXPECT_EQ(client.post("/api/notebook/saveList", {{"_id", second}}).json().at("extra"), true);
    EXPECT_TRUE(client.notebook().empty());
    EXPECT_EQ(client.post("/api/notebook/saveList", {{"_id", list}}).json().at("extra"), false);
    EXPECT_THAT(client.notebook(), UnorderedElementsAre(Key("x=2")));
}

TEST_F(NotebookRoutes, keep_every_users_notebook_apart) {
    ServiceClient other(*service);
    other.post("/mobileSignup", {{"email", "ann@b.cd"}, {"password", "secret1"}});
    other.logIn("ann@b.cd", "secret1");
    EXPECT_TRUE(other.notebook().empty());
    EXPECT_EQ(other.post("/api/notebook/updateNoteNotes", {{"problem", "3x-7=11"}, {"val", "x"}}).status,
              404);
    other.post("/api/notebook/deleteNotes", {{"problems", "3x-7=11"}});
    other.post("/api/notebook/clearNotes");
    EXPECT_TRUE(client.notebook().contains("3x-7=11"));
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
}

TEST(NotesFile, fills_the_demo_notebook) {
    const std::string file = temporaryFile("solver-service-notes.txt");
    std::ofstream(file) << "x=1\r\n\n  \n y=2\nlast";
    SolverService::Options options;
    options.notesFile = file;
    const auto service = startService(options);
    ServiceClient client(*service);
    client.logIn();
    const auto notebook = client.notebook();
    EXPECT_EQ(notebook.size(), 43U);
    EXPECT_TRUE(notebook.contains("x=1") && notebook.contains(" y=2") && notebook.contains("last"));

    std::ofstream(file) << "caf\xE9\n";
    EXPECT_FALSE(SolverService::start(options));
    options.notesFile = file + ".missing";
    EXPECT_FALSE(SolverService::start(options));
}

} // namespace
} // namespace teralune::service
