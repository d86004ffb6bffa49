#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Classes/Model/UserAccountModel.h"
#include "Hosts/CommandLine/SolutionText.h"
#include "Platform/Database/Database.h"
#include "Platform/Foundation/AsciiText.h"
#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Foundation/Utf8.h"
#include "Platform/Http/HeaderSafety.h"
#include "Tests/Faults/FaultCounts.h"
#include "Tests/Support/FakeStoreApplication.h"

#include <boost/json/serialize.hpp>
#include <boost/json/value_from.hpp>
#include <gtest/gtest.h>

#include <set>

namespace teralune {
namespace {

/// What may stand in the place of a value; not all of it is JSON. Among the texts is what a header, a query
/// or a script would trip on, and what is no Unicode.
std::vector<std::string> wrongValues() {
    std::vector<std::string> values;
    for (const std::string_view value : splitList("null,true,0,1,-1,2.5,9223372036854775807,-"
                                                  "9223372036854775809,18446744073709551616,1e300,1e999,-0,"
                                                  "NaN,Infinity,[],[null],[[]],[{}],{},{\"a\":1}",
                                                  ','))
        values.emplace_back(value);
    using namespace std::string_literals;
    for (const std::string& text :
         {""s, "text"s, "\\u0000"s, "a\\u0000b"s, "\\ud800"s, "\\udc00\\ud800"s, "\\uffff"s,
          "a\\r\\nX-Injected: y"s, "\\u0001\\u007f"s, "';--%00%s%n</script>"s, "\xff"s, "\xed\xa0\x80"s,
          "\xf4\x90\x80\x80"s, "\xc0\x80"s, "a\nb"s, std::string(10'240, 'x'), std::string(100'000, 'x')})
        values.push_back("\"" + text + "\"");
    for (const std::size_t depth : {32U, 64U, 65U, 1'000U})
        values.push_back(std::string(depth, '[') + std::string(depth, ']'));
    return values;
}

/// The text around each value of a document, one value at a time.
std::vector<std::pair<std::string, std::string>> gaps(boost::json::value document) {
    const std::string mark = "\"@gap@\"";
    std::vector<std::pair<std::string, std::string>> found;
    const std::function<void(boost::json::value&)> visit = [&](boost::json::value& value) {
        const boost::json::value kept = std::exchange(value, boost::json::value("@gap@"));
        const std::string text = boost::json::serialize(document);
        const std::size_t at = text.find(mark);
        found.emplace_back(text.substr(0, at), text.substr(at + mark.size()));
        value = kept;
        if (value.is_object())
            for (auto& member : value.get_object())
                visit(member.value());
        if (value.is_array())
            for (boost::json::value& element : value.get_array())
                visit(element);
    };
    visit(document);
    return found;
}

/// Cut at each byte, each byte replaced, each value replaced by each wrong one, too deep, doubled.
void forEachDamagedForm(const std::string& text, const std::function<void(const std::string&)>& attack) {
    for (std::size_t length = 0; length < text.size(); ++length) {
        attack(text.substr(0, length));
        for (const char byte : {'\0', '"', '{', ']', '\\', '\xff'}) {
            std::string damaged = text;
            damaged[length] = byte;
            attack(damaged);
        }
    }
    const std::vector<std::string> wrong = wrongValues();
    for (const auto& [before, after] : gaps(parseJson(text).value()))
        for (const std::string& value : wrong)
            attack(before + value + after);
    for (const std::size_t depth : {63U, 64U, 1'000U, 1'000'000U}) {
        std::string objects;
        for (std::size_t level = 0; level < depth; ++level)
            objects += "{\"a\":";
        attack(objects);
        attack(std::string(depth, '['));
        attack(std::string(depth, '[') + text + std::string(depth, ']'));
    }
    for (const std::string& whole : {text + text, "\xef\xbb\xbf" + text, text + '\0', "\xff\xfe" + text,
                                     std::string(faultCount(100'000, 10'000'000), ' ') + text})
        attack(whole);
}

constexpr const char* noteList =
    R"([{"_id":"1","problem":"2x=4","savedFrom":"Solutions","lastChange":"1577836800000","date":"d",)"
    R"("isFavorite":true,"topic":"T","notes":"n","url":"u","tags":["a","b"],"graph":{"f":["x"]}},)"
    R"({"_id":"2","problem":"x","savedFrom":"Graphing Calculator","lastChange":"1","date":"d","graph":"g"}])";

/// A notebook of two notes, somebody signed in, and a server whose every reply is the test's.
struct Victim : FakeStoreApplication {
    Victim() {
        application.userAccountModelService = &account;
        repository.insertNotebookEntries(parseJson(noteList).value().get_array());
    }

    /// A completion that notes that it came, and whether the reply was understood.
    auto completion() {
        return [this](const auto& reply) {
            ++told;
            if constexpr (requires { reply.success; })
                understood = reply.success;
            else if constexpr (requires { reply.has_value(); })
                understood = reply.has_value();
            else
                understood = reply.succeeded();
        };
    }
    void complete(const Task<void>& task) {
        (void)task.continueWith(application.fakePlatform.mainQueue, completion());
    }

    /// SQLite's own examination finds nothing, and one question is answered alike in two ways.
    bool isStoreWhole() {
        bool isWhole = false;
        (void)dataController->managedObjectContext().fetchAndWait([&](Database& database) -> Result<void> {
            Statement check = database.statement("PRAGMA quick_check");
            isWhole = check.nextRow() && check.optionalString(0) == "ok";
            return check.result();
        });
        const auto notes = repository.entriesForFilter(Filter());
        return isWhole && repository.noteCount() == static_cast<std::int64_t>(notes.size());
    }
    /// Identifier and token belong together, and the next request can be sent.
    bool isSessionWhole() {
        const bool isOldToken = application.settings.accessToken() == "t1";
        const bool isOldUser = application.settings.connectedID() == "c1";
        const auto request = networking.adapt({"https://api.test/", HttpMethod::get, {}, {}});
        return (signsIn ? isOldToken == isOldUser : isOldUser) && !unsafeHeaderError(request.value()) &&
               request.value().headers.value("Cookie")->size() < 64 * 1024;
    }

    NotebookEntryRepositoryType& repository = dataController->notebookEntryRepository();
    UserAccountModel account{application};
    bool signsIn = false;
    int told = 0;
    bool understood = false;
};

/// A reply that the library understands, and how it is asked for.
struct Golden {
    std::string_view name;
    const char* reply;
    void (*ask)(Victim&);
};

const Golden goldens[] = {
    {"note list", noteList,
     [](Victim& v) {
         v.networking.getNotebookEntries([&v](const NotebookEntriesReply& reply) {
             if (reply.success)
                 v.repository.insertNotebookEntries(reply.entries);
             v.completion()(reply);
         });
     }},
    {"steps",
     R"({"subject":"s","topic":"t","subtopic":"u","isFromCache":true,"problem":"x","solution":"x^ü",)"
     R"("steps":[{"title":"a","latex":"\\frac{1}π","steps":[{"title":"b"}]}]})",
     [](Victim& v) {
         v.networking.getSolutionSteps(
             "2x=4", {}, SolutionOrigin::input, {}, [&v](const SolutionStepsReply& reply) {
                 v.completion()(reply);
                 if (!reply.body)
                     return;
                 v.repository.updateProblemWithSteps("2x=4", *reply.body);
                 const auto entry = v.repository.getNotebookEntry("2x=4");
                 EXPECT_TRUE(entry && std::get<std::string>(entry->at("stepsData")) == *reply.body);
                 EXPECT_TRUE(
                     isValidUtf8(solutionText(solutionRecord(*reply.body), SolutionDetail::everyStep)));
             });
     }},
    {"shared list", R"({"name":"n","notes":[{"_id":"1","problem":"p"}]})",
     [](Victim& v) { v.networking.loadPreviewNotes("l", v.completion()); }},
    {"taken list", R"({"extra":false})",
     [](Victim& v) { v.networking.savePreviewNotes("l", v.completion()); }},
    {"graph", R"({"response":"r","graph":{"f":["x"]}})",
     [](Victim& v) { v.networking.saveGraph("1", "{}", v.completion()); }},
    {"user",
     R"({"firstName":"Ada","lastName":"L","email":"a@b","registrationDate":"Mar 5, 2019 04:07:09 PM",)"
     R"("dismissedNotifications":["x"],"settings":{"numDecimalDisplay":3,"steps":"hideSteps"},"hasPassword":true})",
     [](Victim& v) {
         v.account.refreshUserInfo();
         v.networking.getUserData(v.completion());
     }},
    {"field", R"({"success":true,"message":"m"})",
     [](Victim& v) { v.complete(v.networking.updateUserField(UserField::firstName, "A")); }},
    {"password", R"({"alert":null})",
     [](Victim& v) { v.complete(v.networking.changePassword("o", "n", "n")); }},
    {"sign-in", R"({"connected":"c2","jwt":"t2"})",
     [](Victim& v) {
         v.signsIn = true;
         v.networking.logInWith("a@b", "p", [&v](const SignInReply& reply) {
             v.account.consume(boost::json::value_from(reply.value_or(SignInReply::value_type())));
             v.completion()(reply);
         });
     }},
    {"refresh", R"({"jwt":"t2","alert":null})",
     [](Victim& v) { v.networking.verify("p", "s", SolutionOrigin::input, v.completion()); }},
    {"plot", R"({"points":[[0,1.5],[1,null]]})",
     [](Victim& v) { v.networking.getPlotInfo("{}", {}, v.completion()); }},
    {"suggestions", R"([{"display":"d","search":"s","priority":2,"pop":3,"nornalPop":0.5,"bucketName":"b"}])",
     [](Victim& v) { v.networking.querySuggestions("q", v.completion()); }},
    {"recognition",
     R"({"location":"l","success":true,"error":"e","latex":"x","user_message":"m","user_message_count":1})",
     [](Victim& v) { v.networking.sendOCRRequest(std::string("jpeg"), "c", 1, v.completion()); }},
};

TEST(HostileReplyTests, damaged_replies_end_in_an_error_or_a_default) {
    for (const Golden& golden : goldens) {
        SCOPED_TRACE(golden.name);
        Victim victim;
        // A refresh is attacked through a request that waits for it.
        const bool attacksRefresh = golden.name == "refresh";
        std::size_t points = 0;
        std::size_t understood = 0;
        const auto attackAs = [&](const std::string& type, const std::string& body) {
            victim.application.settings.setAccessToken("t1");
            victim.application.settings.setConnectedID("c1");
            victim.application.fakePlatform.transport->setScript([&](const URLRequest& request) {
                const bool isRefresh = request.url.ends_with("/refresh");
                const bool isStale =
                    request.headers.value("Cookie")->find("tq.token=t1") != std::string::npos;
                return attacksRefresh && !isRefresh
                           ? ScriptedTransport::reply(isStale ? 403 : 200, "{}")
                           : ScriptedTransport::reply(200, body, {{"Content-Type", type}});
            });
            victim.told = 0;
            golden.ask(victim);
            victim.application.run();
            ++points;
            understood += victim.understood ? 1 : 0;
            EXPECT_EQ(victim.told, 1) << body.substr(0, 400);
            EXPECT_TRUE(victim.isSessionWhole()) << body.substr(0, 400);
            EXPECT_TRUE(points % 10 != 0 || victim.isStoreWhole()) << body.substr(0, 400);
            for (const auto& recorded : victim.application.recordingCrashReporter.takeErrors())
                EXPECT_NE(recorded.error.domain, "DatabaseErrorDomain")
                    << recorded.error.localizedDescription;
            victim.application.recordingCrashReporter.takeLines();
            victim.application.fakePlatform.printer->takeLines();
        };
        const auto attack = [&](const std::string& body) { attackAs("application/json", body); };
        forEachDamagedForm(golden.reply, attack);
        for (const char* charset : {"", "\"", "utf-16", "utf-7", "../../etc/passwd", "iso-2022-jp", "\xff"})
            attackAs(std::string("a/b; charset=") + charset, golden.reply);
        attackAs("a/b; charset=" + std::string(10'240, 'x'), golden.reply);
        attack(golden.reply);
        EXPECT_TRUE(victim.understood && victim.isStoreWhole() && victim.repository.noteCount() == 2);
        printFaults("reply: " + std::string(golden.name), points,
                    std::to_string(understood) + " understood, each told once, store and session whole");
    }
}

TEST(HostileReplyTests, a_list_of_very_many_notes_is_stored_by_its_identifiers) {
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
        victim.application.fakePlatform.transport->setScript(
            [&text](const URLRequest&) { return ScriptedTransport::reply(200, text); });
        goldens[0].ask(victim);
        victim.application.run();
        EXPECT_TRUE(victim.isStoreWhole());
        return victim.repository.noteCount();
    };
    EXPECT_EQ(merge(list + "]"), identifiers.size());
    EXPECT_EQ(merge(list), identifiers.size()) << "a list that breaks off changes nothing";
    EXPECT_EQ(merge(noteList), 2);
    EXPECT_EQ(victim.told, 3);
    printFaults("list of notes", count, std::to_string(identifiers.size()) + " identifiers stored, then two");
}

} // namespace
} // namespace teralune
