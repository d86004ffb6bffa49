#include "SolverService/Model/NoteRecord.h"
#include "SolverService/SolverService.h"
#include "Tests/EndToEnd/Terminal.h"

#include <boost/json/parse.hpp>
#include <gmock/gmock.h>

#include <csignal>
#include <fstream>

namespace teralune {
namespace {

using namespace std::chrono_literals;
using service::Fault;
using service::ReceivedRequest;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using Arguments = std::vector<std::string>;

constexpr auto limit = 30s;
constexpr const char* email = "ada@teralune.example";
constexpr const char* password = "Cx7-unmistakable";
constexpr const char* stepsPath = "/pub_api/steps";

/// A command's words, of which '' is an empty one.
Arguments wordsOf(const std::string& command) {
    std::istringstream stream(command);
    Arguments words(std::istream_iterator<std::string>(stream), {});
    std::replace(words.begin(), words.end(), std::string("''"), std::string());
    return words;
}

std::unique_ptr<SolverService> startService() {
    SolverService::Options options;
    options.demoAccount = SolverService::DemoAccount::none;
    return std::move(SolverService::start(std::move(options)).value());
}

/// The program and a service for it to talk to, on which nobody has an account yet.
class TerminalTests : public testing::Test {
protected:
    TerminalTests() { terminal_.environment["TERALUNE_PASSWORD"] = password; }

    /// Runs a command that must succeed without a word on standard error.
    std::string run(const Arguments& arguments) {
        const Terminal::Outcome outcome = terminal_.run(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.error, "") << testing::PrintToString(arguments);
        return outcome.output;
    }
    void expectRefusal(const Arguments& arguments, int exitCode, const std::string& line) {
        const Terminal::Outcome outcome = terminal_.run(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.error, "teralune: " + line + "\n") << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.output, "") << testing::PrintToString(arguments);
    }
    void signUp(std::initializer_list<service::NoteRecord> notes = {}) {
        run({"sign-up", email, "--first-name", "Ada", "--last-name", "L"});
        ASSERT_TRUE(service_->addNotes(email, notes));
    }
    ReceivedRequest lastRequestTo(const char* path) {
        const auto requests = service_->requestLog().requestsTo(path);
        EXPECT_THAT(requests, Not(IsEmpty())) << path;
        return requests.empty() ? ReceivedRequest() : requests.back();
    }

    std::unique_ptr<SolverService> service_ = startService();
    Terminal terminal_{{"--api-host", service_->host(), "--http"}};
};

service::NoteRecord note(const char* problem, const char* topic, std::vector<std::string> tags,
                         bool isFavorite = false, const char* savedFrom = "Solutions") {
    service::NoteRecord record;
    record.problem = problem;
    record.topic = topic;
    record.tags = std::move(tags);
    record.isFavorite = isFavorite;
    record.savedFrom = savedFrom;
    return record;
}

TEST_F(TerminalTests, the_notebooks_story_from_sign_up_to_sign_out) {
    EXPECT_EQ(run({"sign-up", email, "--first-name", "Ada", "--last-name", "L"}),
              "Signed in as Ada L <ada@teralune.example>\n");
    ASSERT_TRUE(service_->addNotes(email, {note("2x=4", "Linear", {"easy"}, true),
                                           note("x^2=9", "Quadratic", {"easy", "exam"}),
                                           note("y=x", "Graphs", {}, false, "Graphing Calculator")}));
    EXPECT_EQ(boost::json::parse(run({"sync", "--json"})),
              boost::json::parse(R"({"notes":3,"cacheable":2,"cached":2,"nextToCache":null})"));
    EXPECT_THAT(lastRequestTo(stepsPath).target,
                MatchesRegex("/pub_api/steps\\?query=.+&language=en&userId=nolog&origin=notebookcache"));

    EXPECT_EQ(run({"notes", "--favorites"}), "★ 2x=4  · Linear  · Solutions  #easy\n");
    EXPECT_EQ(run({"notes", "--tag", "exam"}), "  x^2=9  · Quadratic  · Solutions  #easy  #exam\n");
    EXPECT_EQ(run({"notes", "--type", "Graphing Calculator", "--topic", "Graphs"}),
              "  y=x  · Graphs  · Graphing Calculator\n");

    service_->expireTokens();
    run({"note", "star", "x^2=9"});
    EXPECT_EQ(service_->requestLog().count("/refresh"), 1U);
    const ReceivedRequest star = lastRequestTo("/api/notebook/updateNoteFavorite");
    EXPECT_EQ(star.method, "POST");
    EXPECT_EQ(star.body, "isMobile=1&problem=x%5E2%3D9&val=true");
    const std::string cookies = star.header("Cookie").value_or("");
    EXPECT_THAT(cookies, AllOf(HasSubstr("tq.platform=iOS;"), HasSubstr("tq.app=Teralune/0.1.0.1;"),
                               HasSubstr("tq.orientation=unknown;"), HasSubstr("tq2.decimal=5;"),
                               HasSubstr(";tq.token="), Not(HasSubstr("; ")), Not(EndsWith(";"))));
    EXPECT_THAT(star.cookie("tq.installation").value_or(""), SizeIs(36));

    run({"note", "tag", "x^2=9", "--add", "hard", "--remove", "easy"});
    EXPECT_EQ(lastRequestTo("/api/notebook/setNoteTags").body,
              "added=hard&isMobile=1&problem=x%5E2%3D9&removed=easy&tags=exam%2Chard");
    EXPECT_EQ(run({"note", "annotate", "x^2=9", "Two roots & both count"}),
              "★ x^2=9  · Quadratic  · Solutions  #exam  #hard\n      Two roots & both count\n");
    EXPECT_TRUE(terminal_.keeps("Two roots", "DataModel2"));
    EXPECT_EQ(run({"note", "save", "5x=10", "--from", "Practice"}), "  5x=10  · Equations  · Practice\n");
    EXPECT_EQ(run({"note", "delete", "y=x", "2x=4"}), "2 deleted.\n");
    EXPECT_EQ(lastRequestTo("/api/notebook/deleteNotes").body, "isMobile=1&problems=y%3Dx%092x%3D4");

    // What the service has now and what the next synchronization makes of the store agree.
    run({"sync"});
    EXPECT_EQ(boost::json::parse(run({"notes", "--json"})).as_array().size(), 2U);
    EXPECT_EQ(run({"notes", "--tag", "hard"}),
              "★ x^2=9  · Quadratic  · Solutions  #exam  #hard\n      Two roots & both count\n");

    service_->requestLog().clear();
    EXPECT_THAT(run({"--offline", "note", "show", "x^2=9"}),
                AllOf(StartsWith("Problem:  x²=9\n1. "), EndsWith("Solution: x=3, x=-3\n")));
    expectRefusal({"--offline", "note", "unstar", "x^2=9"}, 1,
                  "The server could not be reached. Please try again.");
    EXPECT_THAT(run({"--offline", "notes", "--favorites"}), StartsWith("★ x^2=9"));
    EXPECT_THAT(service_->requestLog().requests(), IsEmpty());

    EXPECT_EQ(run({"sign-out"}), "Signed out.\n");
    const ReceivedRequest signOut = lastRequestTo("/logout");
    EXPECT_EQ(signOut.target, "/logout?isMobile=true");
    EXPECT_EQ(signOut.cookie("tq.token"), star.cookie("tq.token"));
    expectRefusal({"notes"}, 1, "Nobody is signed in.");
    EXPECT_FALSE(terminal_.keeps("Two roots", "DataModel2"));
}

TEST_F(TerminalTests, a_refusal_is_one_line_and_leaves_the_notebook_as_it_was) {
    expectRefusal({"whoami"}, 1, "Nobody is signed in.");
    expectRefusal({"sync"}, 1, "Nobody is signed in.");
    expectRefusal({"sign-in", email}, 1, "The email address or the password is not correct.");
    signUp({note("2x=4", "Linear", {"easy"}), note("frobnicate", "", {})});
    expectRefusal({"sign-in", email}, 1, "Somebody is signed in already; sign out first.");
    EXPECT_THAT(run({"sync"}), AllOf(StartsWith("2 notes"), HasSubstr("frobnicate")));
    const std::string notes = run({"notes", "--json"});

    service_->faults().script(service::Faults::everyPath, Fault::answer(500), service::Faults::everyTime);
    const std::string unreachable = "The server could not be reached. Please try again.";
    for (const char* command :
         {"sync", "note star 2x=4", "note annotate 2x=4 n", "note tag 2x=4 --add t", "note delete 2x=4",
          "note save 3x=3", "notes clear", "solve 2x=4", "account delete"})
        expectRefusal(wordsOf(command), 1, unreachable);
    expectRefusal({"settings", "set", "decimals", "7"}, 1, "The settings could not be saved.");
    expectRefusal({"note", "star", "no such"}, 1, "The notebook has no note of \"no such\".");
    service_->faults().clear();
    expectRefusal({"solve", "frobnicate"}, 1, "No steps are available for this problem.");
    EXPECT_EQ(run({"notes", "--json"}), notes);
    EXPECT_THAT(run({"settings"}), HasSubstr("decimals     5\n"));

    service_->rejectRefresh();
    expectRefusal({"note", "star", "2x=4"}, 1, "The server has ended the session. Sign in again.");
    expectRefusal({"whoami"}, 1, "Nobody is signed in.");
}

TEST_F(TerminalTests, settings_go_to_the_server_of_a_signed_in_user_and_nowhere_else) {
    run({"settings", "set", "steps", "hideSteps"});
    EXPECT_EQ(service_->requestLog().count("/api/user/updateUserField"), 0U);
    signUp();
    run({"settings", "set", "steps", "hideSteps"});
    EXPECT_EQ(service_->requestLog().count("/api/user/updateUserField"), 0U);
    run({"settings", "set", "decimals", "10"});
    EXPECT_EQ(lastRequestTo("/api/user/updateUserField").body, "field=settings.numDecimalDisplay&value=10");
    run({"settings", "set", "steps", "stepByStep"});
    EXPECT_EQ(lastRequestTo("/api/user/updateUserField").body, "field=settings.steps&value=stepByStep");
    run({"settings", "set", "suggestions", "off"});
    run({"language", "es"});
    EXPECT_EQ(
        boost::json::parse(run({"settings", "--json"})),
        boost::json::parse(R"({"steps":"stepByStep","decimals":10,"suggestions":false,"language":"es"})"));
    run({"solve", "2x=4"});
    const ReceivedRequest solved = lastRequestTo(stepsPath);
    EXPECT_EQ(solved.target, "/pub_api/steps?query=2x=4&language=es&userId=fe&origin=input");
    EXPECT_EQ(solved.cookie("tq2.decimal"), "10");
}

TEST_F(TerminalTests, an_interrupted_synchronization_ends_after_the_step_under_way) {
    signUp({note("2x=4", "", {}), note("3x=9", "", {}), note("4x=16", "", {})});
    service_->faults().script(stepsPath, Fault::hold());
    Terminal::Running sync = terminal_.start({"sync", "--json"});
    ASSERT_TRUE(service_->faults().waitForHeld(1, limit));
    ::kill(sync.process(), SIGINT);
    ASSERT_TRUE(sync.waitForError("Stopping"));
    service_->faults().release();
    const Terminal::Outcome outcome = sync.wait();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.error, EndsWith("teralune: Interrupted.\n"));
    EXPECT_EQ(boost::json::parse(outcome.output).at("cached"), 1);
    EXPECT_THAT(run({"sync"}), StartsWith("3 notes, the steps of 3 of 3"));
}

TEST_F(TerminalTests, wrong_usage_is_told_without_a_request) {
    for (const char* line :
         {"", "frobnicate", "solve", "solve ''", "solve 2x=4 3x=9", "solve \xff", "notes --type Elsewhere",
          "note", "note show ''", "note tag 2x=4 --add a,b", "note tag 2x=4 --add abcdefghijklmnopqrstu",
          "settings set decimals 1", "settings set decimals 5.0", "settings set steps some", "language xx",
          "image http://elsewhere.example/a.png --output a", "recognize /no/such/file"}) {
        const Terminal::Outcome outcome = terminal_.run(wordsOf(line));
        EXPECT_EQ(outcome.exitCode, 2) << line;
        EXPECT_THAT(outcome.error, MatchesRegex("teralune: [^\n]+\n")) << line;
    }
    terminal_.environment.clear();
    expectRefusal({"sign-in", email}, 2,
                  "There is no terminal to ask for the password; set TERALUNE_PASSWORD.");
    EXPECT_THAT(service_->requestLog().requests(), IsEmpty());
    EXPECT_EQ(terminal_.run({"solve", std::string(100'000, 'x')}).exitCode, 1);
    EXPECT_EQ(terminal_.run({"note", "show", "--help"}).exitCode, 0);
}

TEST_F(TerminalTests, a_data_folder_that_cannot_be_used_is_refused_before_the_library_starts) {
    terminal_.environment["HOME"] = terminal_.folder();
    const auto in = [&](const std::string& folder) {
        return terminal_.run({"--data-dir", terminal_.folder() / folder, "settings"});
    };
    EXPECT_EQ(in("made/with/parents").exitCode, 0);
    EXPECT_EQ(std::filesystem::status(terminal_.folder() / "made/with/parents").permissions(),
              std::filesystem::perms::owner_all);
    terminal_.write("a-file", "");
    terminal_.write("torn/DataModel2.sqlite", "not a notebook at all");
    terminal_.write("odd/UserDefaults.sqlite", "not the settings at all");
    std::filesystem::create_directories(terminal_.folder() / "blocked/DataModel2.sqlite");
    for (const char* folder : {"a-file", "a-file/below", "torn", "odd", "blocked", "/proc/no-such"}) {
        const Terminal::Outcome outcome = in(folder);
        EXPECT_EQ(outcome.exitCode, 1) << folder;
        EXPECT_THAT(outcome.error, MatchesRegex("teralune: [^\n]+\n")) << folder;
    }
    const std::string torn = terminal_.folder() / "torn";
    EXPECT_EQ(run({"--data-dir", torn, "--json", "store", "repair"}),
              R"({"repaired":true,"notes":0,"steps":0,"damagedFile":")" + torn +
                  "/DataModel2.damaged-1.sqlite\"}\n");
    EXPECT_EQ(in("torn").exitCode, 0);
    expectRefusal({"--data-dir", terminal_.folder(), "store", "repair"}, 1,
                  "The notebook store can't be repaired: There is no notebook store at " +
                      (terminal_.folder() / "DataModel2.sqlite.").string());
}

TEST_F(TerminalTests, output_that_cannot_be_written_and_servers_that_cannot_be_found_are_failures) {
    for (const char* host : {"127.0.0.1:1", "no-such-host.invalid", "not a host"}) {
        Terminal other({"--api-host", host, "--http"});
        other.environment["TERALUNE_PASSWORD"] = password;
        const Terminal::Outcome outcome = other.run({"sign-in", email});
        EXPECT_EQ(outcome.exitCode, 1) << host;
        EXPECT_EQ(outcome.error, "teralune: Signing in failed. Please check your connection.\n") << host;
    }
    const Terminal::Outcome full = terminal_.run({"settings"}, "/dev/full");
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_EQ(full.error, "teralune: The output could not be written.\n");
    // https is what a named service is spoken to in, and this one does not speak it.
    Terminal secure({"--api-host", service_->host()});
    EXPECT_EQ(secure.run({"solve", "2x=4"}).exitCode, 1);
    EXPECT_THAT(service_->requestLog().requests(), IsEmpty());
}

TEST(StandInTests, a_program_without_a_host_keeps_accounts_and_notes_between_commands) {
    Terminal terminal;
    terminal.environment["TERALUNE_PASSWORD"] = "teralune";
    EXPECT_THAT(terminal.run({"sign-in", "demo@teralune.example"}).output, StartsWith("Signed in as "));
    EXPECT_EQ(terminal.run({"note", "save", "9x=81", "--topic", "Mine"}).exitCode, 0);
    EXPECT_EQ(terminal.run({"sign-out"}).exitCode, 0);
    EXPECT_EQ(terminal.run({"sign-in", "demo@teralune.example"}).exitCode, 0);
    // Two commands at the same time, each with a service of its own over the same data.
    Terminal::Running first = terminal.start({"sync", "--json"});
    Terminal::Running second = terminal.start({"sync", "--json"});
    const Terminal::Outcome outcomes[] = {first.wait(), second.wait()};
    for (const Terminal::Outcome& outcome : outcomes)
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(terminal.run({"notes", "--topic", "Mine"}).output, "  9x=81  · Mine  · Solutions\n");
    const auto status = boost::json::parse(terminal.run({"status", "--json"}).output);
    EXPECT_EQ(status.at("cached"), status.at("cacheable"));
}

} // namespace
} // namespace teralune
