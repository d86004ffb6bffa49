#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Classes/Model/UserAccountModel.h"
#include "Platform/Database/Database.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Http/HeaderSafety.h"
#include "Tests/Faults/FaultCounts.h"
#include "Tests/Faults/HostileTexts.h"
#include "Tests/Support/FakeStoreApplication.h"

#include <gtest/gtest.h>

#include <set>

namespace teralune {
namespace {

constexpr const char* noteList =
    R"([{"_id":"1","problem":"2x=4","savedFrom":"Solutions","lastChange":"1577836800000","date":"d",)"
    R"("isFavorite":true,"topic":"T","notes":"n","url":"u","tags":["a","b"],"graph":{"f":["x"]}},)"
    R"({"_id":"2","problem":"x","savedFrom":"Graphing Calculator","lastChange":"1","date":"d","graph":"g"}])";

/// A notebook of two notes, somebody signed in, and a server whose every reply is the test's.
class Victim {
public:
    Victim() {
        host.application.userAccountModelService = &account;
        repository().insertNotebookEntries(parseJson(noteList).value().get_array());
    }

    NotebookEntryRepositoryType& repository() { return host.dataController->notebookEntryRepository(); }
    Networking& networking() { return host.networking; }

    /// For a completion: whether the reply was understood, and that it came.
    void tell(bool isUnderstood) {
        ++told;
        understood = isUnderstood;
    }

    /// The store passes SQLite's own examination and answers one question in two ways alike.
    bool isStoreWhole() {
        bool isWhole = false;
        (void)host.dataController->managedObjectContext().fetchAndWait(
            [&](Database& database) -> Result<void> {
                Statement check = database.statement("PRAGMA quick_check");
                isWhole = check.nextRow() && check.optionalString(0) == "ok";
                return check.result();
            });
        const auto notes = repository().entriesForFilter(Filter());
        return isWhole && repository().noteCount() == static_cast<std::int64_t>(notes.size());
    }
    /// Identifier and token belong together, and the next request can be sent.
    bool isSessionWhole() {
        const bool isOldToken = host.application.settings.accessToken() == "t1";
        const bool isOldUser = host.application.settings.connectedID() == "c1";
        const auto request = host.networking.adapt({"https://api.test/", HttpMethod::get, {}, {}});
        return (signsIn ? isOldToken == isOldUser : isOldUser) && request &&
               !unsafeHeaderError(request.value());
    }

    FakeStoreApplication host;
    UserAccountModel account{host.application};
    bool signsIn = false;
    int told = 0;
    bool understood = false;
};

/// A reply that the library understands, and how it is asked for.
struct Golden {
    const char* name;
    const char* reply;
    void (*ask)(Victim&);
};

void PrintTo(const Golden& golden, std::ostream* stream) {
    *stream << golden.name;
}

const Golden goldens[] = {
    {"note_list", noteList,
     [](Victim& v) {
         v.networking().getNotebookEntries([&v](const NotebookEntriesReply& reply) {
             if (reply.success)
                 v.repository().insertNotebookEntries(reply.entries);
             v.tell(reply.success && v.repository().noteCount() == 2);
         });
     }},
    {"steps", R"({"subject":"s","topic":"t","subtopic":"u","isFromCache":true,"steps":[{"a":["\\frac"]}]})",
     [](Victim& v) {
         v.networking().getSolutionSteps(
             "2x=4", {}, SolutionOrigin::input, {}, [&v](SolutionStepsReply reply) {
                 if (reply.body) {
                     v.repository().updateProblemWithSteps("2x=4", *reply.body);
                     const auto entry = v.repository().getNotebookEntry("2x=4");
                     EXPECT_TRUE(entry && std::get<std::string>(entry->at("stepsData")) == *reply.body);
                 }
                 v.tell(reply.metadata && reply.metadata->topic == "t" && reply.metadata->cached);
             });
     }},
    {"shared_list", R"({"name":"n","notes":[{"_id":"1","problem":"p"}]})",
     [](Victim& v) {
         v.networking().loadPreviewNotes("l", [&v](const PreviewNotesReply& reply) {
             v.tell(reply.success && reply.name == "n" && reply.notes && reply.notes->size() == 1);
         });
     }},
    {"taking_a_shared_list", R"({"extra":false})",
     [](Victim& v) {
         v.networking().savePreviewNotes("l", [&v](const SavePreviewNotesReply& r) { v.tell(r.success); });
     }},
    {"saved_graph", R"({"response":"r","graph":{"f":["x"]}})",
     [](Victim& v) {
         v.networking().saveGraph("1", "{}", [&v](const SaveGraphReply& reply) {
             v.tell(reply.success && reply.response == "r" && reply.graph == R"({"f":["x"]})");
         });
     }},
    {"user",
     R"({"firstName":"Ada","lastName":"L","email":"a@b","registrationDate":"Mar 5, 2019 04:07:09 PM",)"
     R"("dismissedNotifications":["x"],"settings":{"numDecimalDisplay":3,"steps":"stepByStep"},"hasPassword":true})",
     [](Victim& v) {
         v.account.refreshUserInfo();
         v.networking().getUserData([&v](const std::optional<UserData>& user) {
             v.tell(user && user->registrationDate && user->settings &&
                    user->dismissedNotifications.size() == 1 &&
                    v.host.application.settings.firstName() == "Ada");
         });
     }},
    {"user_field", R"({"success":true,"message":"m"})",
     [](Victim& v) {
         (void)v.networking()
             .updateUserField(UserField::firstName, "A")
             .continueWith(v.host.application.fakePlatform.mainQueue,
                           [&v](const Result<void>& result) { v.tell(result.succeeded()); });
     }},
    {"password", R"({"alert":null})",
     [](Victim& v) {
         (void)v.networking()
             .changePassword("o", "n", "n")
             .continueWith(v.host.application.fakePlatform.mainQueue,
                           [&v](const Result<void>& result) { v.tell(result.succeeded()); });
     }},
    {"sign_in", R"({"connected":"c2","jwt":"t2"})",
     [](Victim& v) {
         v.signsIn = true;
         v.networking().logInWith("a@b", "p", [&v](const SignInReply& reply) {
             boost::json::object object;
             for (const auto& [key, value] : reply.value_or(SignInReply::value_type()))
                 object[key] = value;
             v.account.consume(boost::json::value(object));
             v.tell(v.host.application.settings.accessToken() == "t2");
         });
     }},
    {"refresh", R"({"jwt":"t2","alert":null})",
     [](Victim& v) {
         v.networking().verify("p", "s", SolutionOrigin::input, [&v](const VerifyReply& reply) {
             v.tell(reply.success && v.host.application.settings.accessToken() == "t2");
         });
     }},
    {"plot", R"({"points":[[0,1.5],[1,null]]})",
     [](Victim& v) {
         v.networking().getPlotInfo("{}", {}, [&v](const PlotInfoReply& reply) { v.tell(reply.success); });
     }},
    {"suggestions", R"([{"display":"d","search":"s","priority":2,"pop":3,"nornalPop":0.5,"bucketName":"b"}])",
     [](Victim& v) {
         v.networking().querySuggestions("q", [&v](const auto& list) { v.tell(list && list->size() == 1); });
     }},
    {"recognition",
     R"({"location":"l","success":true,"error":"e","latex":"x","user_message":"m","user_message_count":1})",
     [](Victim& v) {
         v.networking().sendOCRRequest(std::string("jpeg"), "c", 1, [&v](const OCRReply& reply) {
             v.tell(reply.success && reply.userMessage == "m");
         });
     }},
};

class HostileReplyTests : public testing::TestWithParam<Golden> {
protected:
    /// Gives the reply to the endpoint under attack; a refresh is attacked through what waits for it.
    void attack(const std::string& body, const std::string& contentType = "application/json") {
        victim.host.application.settings.setAccessToken("t1");
        victim.host.application.settings.setConnectedID("c1");
        victim.told = 0;
        victim.host.application.fakePlatform.transport->setScript([&](const URLRequest& request) {
            const bool isRefresh = request.url.ends_with("/refresh");
            const bool isStale = isRefreshAttacked && !isRefresh &&
                                 request.headers.value("Cookie")->find("tq.token=t1") != std::string::npos;
            return isStale ? ScriptedTransport::reply(403)
                           : ScriptedTransport::reply(200, isRefresh == isRefreshAttacked ? body : "{}",
                                                      {{"Content-Type", contentType}});
        });
        GetParam().ask(victim);
        victim.host.application.run();
        ++points;
        EXPECT_EQ(victim.told, 1) << body.substr(0, 400);
        EXPECT_TRUE(victim.isSessionWhole()) << body.substr(0, 400);
        const auto errors = victim.host.application.recordingCrashReporter.takeErrors();
        for (const auto& recorded : errors)
            EXPECT_NE(recorded.error.domain, "DatabaseErrorDomain") << recorded.error.localizedDescription;
    }
    void expectUnderstood() {
        attack(GetParam().reply);
        EXPECT_TRUE(victim.understood);
    }

    Victim victim;
    const bool isRefreshAttacked = std::string_view(GetParam().name) == "refresh";
    const bool touchesStore = GetParam().reply == noteList || std::string_view(GetParam().name) == "steps";
    std::size_t points = 0;
};

TEST_P(HostileReplyTests, end_in_an_error_or_a_default) {
    expectUnderstood();
    std::size_t understood = 0;
    forEachDamagedForm(GetParam().reply, [&](const std::string& body) {
        attack(body);
        understood += victim.understood ? 1 : 0;
        EXPECT_TRUE(!touchesStore || victim.isStoreWhole()) << body.substr(0, 400);
        victim.host.application.recordingCrashReporter.takeLines();
        victim.host.application.fakePlatform.printer->takeLines();
    });
    for (const std::string& type :
         {std::string(), std::string("text/html"), std::string("a/b; charset=utf-16"),
          std::string("a/b; charset=\""), std::string("a/b; charset=utf-7"),
          std::string("a/b; charset=../../etc/passwd"), "a/b; charset=" + std::string(10'240, 'x')})
        attack(GetParam().reply, type);
    expectUnderstood();
    printFaults(std::string("reply ") + GetParam().name, points,
                std::to_string(understood) + " still understood, each told once, store and session whole");
}

INSTANTIATE_TEST_SUITE_P(, HostileReplyTests, testing::ValuesIn(goldens),
                         [](const auto& golden) { return std::string(golden.param.name); });

TEST(HostileListTests, a_list_of_very_many_notes_is_stored_by_its_identifiers) {
    const std::size_t count = faultCount(50'000, 500'000);
    Victim victim;
    std::set<std::string> identifiers;
    std::string list = "[";
    for (std::size_t index = 0; index < count; ++index) {
        // Most are their own; some share one, the empty one among them; a few are long.
        const std::string id = index % 10 < 7      ? std::to_string(index)
                               : index % 10 == 7   ? std::string()
                               : index % 1000 == 8 ? std::string(10'240, 'x') + std::to_string(index)
                                                   : "same";
        const bool isUsable = index % 11 != 3;
        if (isUsable)
            identifiers.insert(id);
        list += (index == 0 ? "{" : ",{") + std::string(R"("_id":")") + id + R"(","problem":")" +
                std::to_string(index % 100) + R"(","savedFrom":)" + (isUsable ? R"("S")" : "7") +
                R"(,"lastChange":"1","date":"d","tags":["t)" + std::to_string(index % 500) + "\",\"\"]}";
    }
    const auto merge = [&victim](std::string text) {
        victim.host.application.fakePlatform.transport->setScript(
            [&text](const URLRequest&) { return ScriptedTransport::reply(200, text); });
        goldens[0].ask(victim);
        victim.host.application.run();
        EXPECT_TRUE(victim.isStoreWhole());
        return victim.repository().noteCount();
    };
    EXPECT_EQ(merge(list + "]"), identifiers.size());
    EXPECT_EQ(merge(list), identifiers.size()) << "a list that breaks off changes nothing";
    EXPECT_EQ(merge(noteList), 2);
    EXPECT_EQ(victim.told, 3);
    printFaults("list of notes", count, std::to_string(identifiers.size()) + " identifiers stored, then two");
}

} // namespace
} // namespace teralune
