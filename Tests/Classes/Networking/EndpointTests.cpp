#include "Classes/Networking/TeraluneNetworkingError.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Http/MultipartFormData.h"
#include "Tests/Classes/Networking/NetworkingFixture.h"

#include <algorithm>
#include <functional>

namespace teralune {
namespace {

/// Collects what completions are told, each outcome as one text, so that a table can hold it.
class Told {
public:
    std::vector<std::string> outcomes;

    explicit Told(std::shared_ptr<DispatchQueue> mainQueue) : mainQueue_(std::move(mainQueue)) {}

    auto completion() {
        return [this](auto reply) { outcomes.push_back(text(reply)); };
    }
    template<class T>
    void operator()(const Task<T>& task) {
        (void)task.continueWith(mainQueue_, [this](const Result<T>& r) { outcomes.push_back(text(r)); });
    }

private:
    using List = std::optional<std::vector<Suggestion>>;

    static std::string text(bool value) { return value ? "true" : "false"; }
    static std::string text(const std::string& value) { return value; }
    static std::string text(const std::optional<std::string>& value) { return value.value_or("-"); }
    static std::string text(const boost::json::array& array) { return serializeJson(array); }
    template<class... Values>
    static std::string words(const Values&... values) {
        std::string all;
        (all.append(all.empty() ? "" : " ").append(text(values)), ...);
        return all;
    }
    static std::string text(const SolutionStepsReply& r) { return words(r.success, r.isNull, r.body); }
    static std::string text(const VerifyReply& r) { return words(r.success, r.body); }
    static std::string text(const PlotInfoReply& r) { return words(r.success, r.flag, r.body); }
    static std::string text(const NotebookEntriesReply& r) { return words(r.success, r.entries); }
    static std::string text(const SaveGraphReply& r) { return words(r.success, r.response, r.graph); }
    static std::string text(const SavePreviewNotesReply& r) { return words(r.success, r.limitReached); }
    static std::string text(const PreviewNotesReply& r) {
        return words(r.success, r.notes.has_value(), r.notes.value_or(boost::json::array()), r.name);
    }
    static std::string text(const OCRReply& r) {
        const OCRResponse response = r.response.value_or(OCRResponse{});
        return words(r.success, r.networkFailure, r.response.has_value(), response.latex, r.userMessage);
    }
    static std::string text(const std::optional<UserData>& user) {
        return user ? words(user->firstName) : "none";
    }
    static std::string text(const List& list) {
        std::string all = text(list.has_value());
        for (const Suggestion& suggestion : list.value_or(List::value_type()))
            all += " " + suggestion.display;
        return all;
    }
    static std::string text(const SignInReply& reply) {
        std::string all = text(reply.has_value());
        for (const auto& [key, value] : reply.value_or(SignInReply::value_type()))
            all += " " + key + "=" + value;
        return all;
    }
    template<class T>
    static std::string text(const Result<T>& result) {
        if constexpr (std::is_void_v<T>) {
            if (result)
                return "done";
        } else if (result) {
            return result.value();
        }
        const auto which = TeraluneNetworkingError::caseOf(result.error());
        if (which == TeraluneNetworkingError::Case::failureWithMessage)
            return "refused: " + result.error().localizedDescription;
        return which ? "case " + std::to_string(static_cast<int>(*which)) : "error";
    }

    std::shared_ptr<DispatchQueue> mainQueue_;
};

enum class Posts { nothing, userUpdatedNote };
constexpr Posts posted = Posts::userUpdatedNote;

struct Answer {
    std::string body;
    std::string outcome; ///< empty when nothing is told
    Posts posts = Posts::nothing;
    std::string printed = {};
};

struct Endpoint {
    std::string request; ///< who may send it, method, path on the solver's host, body
    std::string failure; ///< the outcome when the request fails
    std::vector<Answer> answers;
    std::function<void(Networking&, Told&)> call;

    bool needsSignIn() const { return request.starts_with("private"); }
};

void PrintTo(const Endpoint& endpoint, std::ostream* stream) {
    *stream << endpoint.request;
}

Endpoint row(std::string request, std::string failure, std::vector<Answer> answers,
             std::function<void(Networking&, Told&)> call) {
    return {std::move(request), std::move(failure), std::move(answers), std::move(call)};
}

std::vector<Endpoint> endpoints() {
    using N = Networking;
    const Answer noUser{"[]", "none", {}, "didn't get user object as JSON from API"};
    const std::string noObject = "didn't get response object as JSON from API";
    const std::string noSuggestions = "didn't get suggestion objects as JSON from API";
    const std::string noNotes = "Error reading json";
    const std::string noServer = "false true false - The server could not be reached. Please try again.";
    const std::vector<Answer> alerts = {{"{}", "done"},
                                        {R"({"alert":null})", "done"},
                                        {R"({"alert":"No."})", "refused: No."},
                                        {"[]", "case 1", {}, noObject},
                                        {"<html>", "case 1", {}, noObject}};
    const std::vector<Answer> signIns = {{R"({"connected":"c","jwt":"t"})", "true connected=c jwt=t"},
                                         {R"({"alert":"No."})", "true alert=No."},
                                         {R"({"connected":"c","jwt":"t","count":3})", "false"},
                                         {"[]", "false"},
                                         {"<html>", "false"}};
    return {
        row("any GET /pub_api/steps?query=x%2B1%262=%C3%BC&language=en&userId=fe&origin=notebookcache",
            "false false -",
            {{R"({"subject":"s"})", R"(true false {"subject":"s"})"}, {"null", "false true -"}},
            [](N& n, Told& t) {
                n.getSolutionSteps("x+1&2=ü", {true}, SolutionOrigin::notebookCache, {}, t.completion());
            }),
        row("any GET /pub_api/steps?query=x&language=en&userId=nolog&origin=input&solutionRequest="
            "SolutionOnly",
            "false false -", {{"text", "true false text"}},
            [](N& n, Told& t) {
                n.getSolutionSteps("x", {}, SolutionOrigin::input, {true}, t.completion());
            }),
        row("any GET /api/verifySolution?problem=a%20b&solution=%2B%26&language=en&origin=practice",
            "false -", {{"{}", "true {}"}, {"null", "false -"}, {"", "false -"}},
            [](N& n, Told& t) { n.verify("a b", "+&", SolutionOrigin::practice, t.completion()); }),
        row("any POST /pub_api/graph/plottingInfo?origin=mobile&userId=fe userGraph=%7B%7D", "false false -",
            {{"{}", "true false {}"}, {"null", "false false -"}, {"", "false false -"}},
            [](N& n, Told& t) { n.getPlotInfo("{}", {true}, t.completion()); }),
        row("any GET /suggest?userId=mobile&language=en&query=a%26b", "false",
            {{R"([{"display":"a","search":"s"},{"search":"s"},{"display":"b","search":"t"}])", "true a b"},
             {"[]", "true"},
             {R"([{"display":"a","search":"s"},7])", "false", {}, noSuggestions},
             {"\"fragment\"", "false", {}, noSuggestions}},
            [](N& n, Told& t) { n.querySuggestions("a&b", t.completion()); }),
        row("any POST https://ocr.test/api/getLatex?mode=&sessionid=c%201&language=en "
            "image|0007.jpg|image/jpeg|jpeg",
            noServer,
            {{R"({"success":true,"latex":"x^2"})", "true false true x^2 -"},
             {R"({"success":true,"latex":"x","user_message":"m","user_message_count":1})",
              "true false true x m"},
             {R"({"success":false,"error":"e","user_message":"m","user_message_count":0})",
              "false false true - -"},
             {"[]", noServer}},
            [](N& n, Told& t) { n.sendOCRRequest(std::string("jpeg"), "c 1", 7, t.completion()); }),
        row("any GET /i?id=1&width=320", "error", {{"\xff\x01", "/wE="}, {"", ""}},
            [](N& n, Told& t) { t(n.requestImage("https://api.test/i?id=1", 320)); }),
        row("private GET /api/hasWebNotes", "false",
            {{"TrUe", "true"}, {"1", "false"}, {"", "false"}, {"true ", "false"}},
            [](N& n, Told& t) { n.hasWebNotes(t.completion()); }),
        row("private GET /api/notebookEntriesForMobileAll", "false []",
            {{R"([{"_id":"1"}])", R"(true [{"_id":"1"}])"},
             {"{}", "false []", {}, noNotes},
             {"<html>", "false []", {}, noNotes}},
            [](N& n, Told& t) { n.getNotebookEntries(t.completion()); }),
        row("private POST /api/notebook/addNote isMobile=1&isNotebook=1&problem=x%5E2&savedFrom=S&topic=T",
            "false", {{R"({"response":"ok"})", "true", posted}, {"[]", "false", {}, noNotes}},
            [](N& n, Told& t) { n.saveNote("x^2", "T", "S", t.completion()); }),
        row("private POST /api/notebook/saveGraph graphId=&graphJson=%7B%7D&isMobile=1", "false - -",
            {{R"({"response":"r","graph":"g"})", "true r g", posted},
             {R"({"response":1,"graph":{"a":[1]}})", R"(true - {"a":[1]})", posted},
             {"null", "false - -", {}, noNotes}},
            [](N& n, Told& t) { n.saveGraph(std::nullopt, "{}", t.completion()); }),
        row("private POST /api/notebook/deleteNotes isMobile=1&problems=a", "false", {{"", "true", posted}},
            [](N& n, Told& t) { n.removeNote("a", t.completion()); }),
        row("private POST /api/notebook/deleteNotes isMobile=1&problems=a%09b%20c", "false",
            {{"anything", "true", posted}},
            [](N& n, Told& t) {
                n.removeNotes(std::vector<std::string>{"a", "b c"}, t.completion());
            }),
        row("private POST /api/notebook/updateNoteFavorite isMobile=1&problem=p&val=false", "false",
            {{"", "true", posted}},
            [](N& n, Told& t) { n.updateNote(Favorite{false}, "p", t.completion()); }),
        row("private POST /api/notebook/updateNoteNotes isMobile=1&problem=p&val=%C3%A9", "false",
            {{"", "true", posted}}, [](N& n, Told& t) { n.updateNote(Notes{"é"}, "p", t.completion()); }),
        row("private POST /api/notebook/setNoteTags added=b&isMobile=1&problem=p&removed=&tags=a%2Cb",
            "error", {{"", "done", posted}},
            [](N& n, Told& t) {
                t(n.updateNote(TagChange{{"a", "b"}, {}, {"b"}}, "p"));
            }),
        row("private POST /api/notebook/clearNotes", "error", {{"", "done", posted}},
            [](N& n, Told& t) { t(n.clearNotebook()); }),
        row("any POST /api/notebook/getList _id=l1", "false false [] -",
            {{R"({"name":"n","notes":[{}]})", "true true [{}] n"},
             {R"({"notes":"no"})", "true false [] -"},
             {"[]", "false false [] -", {}, noNotes}},
            [](N& n, Told& t) { n.loadPreviewNotes("l1", t.completion()); }),
        row("private POST /api/notebook/saveList _id=l1", "false false",
            {{R"({"extra":false})", "true false", posted},
             {R"({"extra":true})", "false true"},
             {"[]", "false false", {}, noNotes}},
            [](N& n, Told& t) { n.savePreviewNotes("l1", t.completion()); }),
        row("private POST /api/user/info", "none", {{R"({"firstName":"Ada"})", "Ada"}, noUser},
            [](N& n, Told& t) { n.getUserData(t.completion()); }),
        row("private POST /api/user/disableAccount", "error", {{"whatever", "done"}},
            [](N& n, Told& t) { t(n.deleteAccount()); }),
        row("private POST /api/user/updateEmail newEmail=a%40b&password=p", "error", alerts,
            [](N& n, Told& t) { t(n.updateEmail("a@b", "p", std::nullopt)); }),
        row("private POST /api/user/updateEmail newEmail=a%40b&password=p&password2=q", "error", alerts,
            [](N& n, Told& t) { t(n.updateEmail("a@b", "p", "q")); }),
        row("private POST /api/user/updateUserField field=settings.numDecimalDisplay&value=4", "error",
            {{R"({"success":true})", "done"},
             {R"({"success":false,"message":"x"})", "case 2"},
             {"[]", "case 1", {}, noObject}},
            [](N& n, Told& t) { t(n.updateUserField(UserField::numDecimalDisplay, "4")); }),
        row("private POST /api/user/changePassword currentPassword=o&force=false&password=n&password2=c",
            "error", alerts, [](N& n, Told& t) { t(n.changePassword("o", "n", "c")); }),
        row("private GET /logout?isMobile=true", "", {{"bytes", ""}}, [](N& n, Told&) { n.logOut(); }),
        row("private POST /api/user/dismissNotification notificationKey=k", "", {{"text", ""}},
            [](N& n, Told&) { n.dismissNotification("k"); }),
        row("any POST /resetRequest email=a%40b&lang=en", "error", alerts,
            [](N& n, Told& t) { t(n.resetPasswordWith("a@b")); }),
        row("any POST /mobileLogin email=a%40b&lang=en&password=p", "false", signIns,
            [](N& n, Told& t) { n.logInWith("a@b", "p", t.completion()); }),
        row("any POST /mobileSignup email=a%40b&firstName=F&lang=en&lastName=L&password=p", "false", signIns,
            [](N& n, Told& t) { n.signupWith("a@b", "F", "L", "p", t.completion()); }),
        row("any POST /mobileFacebookAuth facebookObj=%7B%22id%22%3A%221%22%7D&lang=en", "false", signIns,
            [](N& n, Told& t) {
                n.facebookAuthWith({{"id", "1"}}, t.completion());
            }),
        row("any POST /microsoftMobileAuth2?lang=en code=c&code_verifier=v&redirectUrl=s%3A//auth/", "false",
            signIns, [](N& n, Told& t) { n.microsoftAuthWith("c", "v", "s://auth/", t.completion()); }),
        row("any POST /logCachedStepsMobile connected=&language=en&offline=true&query=q&topic=t", "false",
            {{"ok", "true"}}, [](N& n, Told& t) { n.logCachedSteps("q", "t", {true}, t.completion()); }),
        row("any POST /logCachedStepsMobile connected=&language=en&query=q", "false", {{"", "true"}},
            [](N& n, Told& t) { n.logCachedSteps("q", {}, {false}, t.completion()); }),
    };
}

std::string line(const URLRequest& request) {
    const std::string host = "https://api.test";
    std::string line = std::string(name(request.method)) + " " +
                       (request.url.starts_with(host) ? request.url.substr(host.size()) : request.url);
    if (const auto* bytes = std::get_if<std::shared_ptr<const std::string>>(&request.body))
        line += " " + **bytes;
    if (const auto* form = std::get_if<std::shared_ptr<const MultipartFormData>>(&request.body))
        for (const auto& part : (*form)->parts())
            line += " " + part.name + "|" + part.fileName + "|" + part.mimeType + "|" +
                    std::get<std::string>(part.content);
    return line;
}

class EndpointTests : public NetworkingFixture, public testing::WithParamInterface<Endpoint> {
protected:
    Told told{application.fakePlatform.mainQueue};
    int posts = 0;
    Observation observation = application.fakePlatform.notificationCenter->observe(
        "UserUpdatedNoteNotification", [this](const Notification&) { ++posts; });

    std::vector<std::string> takeOutcomes() { return std::exchange(told.outcomes, {}); }
    static std::vector<std::string> toldOnce(const std::string& outcome) {
        return GetParam().failure.empty() ? std::vector<std::string>() : std::vector{outcome};
    }
    void expect(const TransferOutcome& outcome, const Answer& expected) {
        SCOPED_TRACE(outcome.body);
        GetParam().call(*networking, told);
        answerEverythingWith(outcome);
        EXPECT_EQ(takeOutcomes(), toldOnce(expected.outcome));
        std::string printed; // beside the error that a failure is reported with
        for (const std::string& one : application.fakePlatform.printer->takeLines())
            printed += one.starts_with("Error: ") ? "" : one;
        EXPECT_EQ(printed, expected.printed);
        EXPECT_EQ(std::exchange(posts, 0), expected.posts == posted ? 1 : 0);
    }
};

TEST_P(EndpointTests, sends_these_bytes_and_tells_each_answer_once) {
    for (const Answer& answer : GetParam().answers)
        expect(reply(200, answer.body), answer);
    const bool printsFailures = GetParam().request == "private POST /api/user/info";
    const Answer failure{
        "", GetParam().failure, {}, printsFailures ? "didn't get user object as JSON from API" : ""};
    expect(reply(500, "{}"), failure);
    expect(ScriptedTransport::failure(HttpTransportError::timedOut), failure);
    EXPECT_EQ((GetParam().needsSignIn() ? "private " : "any ") + line(transport.requests().front()),
              GetParam().request);
}

TEST_P(EndpointTests, asks_for_a_token_after_a_403_unless_it_needs_a_sign_in_that_is_missing) {
    GetParam().call(*networking, told);
    application.run();
    answer(0, reply(403, "{}"));
    const auto lines = application.recordingCrashReporter.lines();
    const char* skipped = "Skipping endless loop: don't retry token request, user is not logged in.";
    EXPECT_EQ(std::count(lines.begin(), lines.end(), skipped), GetParam().needsSignIn() ? 1 : 0);
    EXPECT_EQ(urls().size(), GetParam().needsSignIn() ? 1U : 2U);
    EXPECT_EQ(urls().back() == "https://api.test/api/mobile/token", !GetParam().needsSignIn());
}

TEST_P(EndpointTests, tells_a_failure_when_the_client_ends_first) {
    GetParam().call(*networking, told);
    application.run();
    networking.reset();
    application.run();
    EXPECT_EQ(takeOutcomes(), toldOnce(GetParam().failure));
}

INSTANTIATE_TEST_SUITE_P(, EndpointTests, testing::ValuesIn(endpoints()));

} // namespace
} // namespace teralune
