#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Classes/Interfaces/NotebookSynchronizationJobType.h"
#include "Classes/Model/UserAccountModel.h"
#include "Tests/Support/FakeStoreApplication.h"

#include <boost/json/parse.hpp>
#include <gmock/gmock.h>

namespace teralune {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct MockJob : NotebookSynchronizationJobType {
    MOCK_METHOD(void, runSynchronizationJob, (), (override));
    MOCK_METHOD(void, stopJob, (), (override));
    MOCK_METHOD(void, waitForCompletion, (), (override));
};

class AccountModel : public testing::Test {
protected:
    AccountModel() {
        application.userAccountModelService = &model;
        application.notebookSynchronizationJobService = &job;
    }

    FakeStoreApplication host;
    FakeApplication& application = host.application;
    SettingsPersistence& settings = application.settings;
    UserAccountModel model{application};
    testing::StrictMock<MockJob> job;
};

TEST_F(AccountModel, only_a_reply_of_texts_with_id_and_token_signs_in) {
    for (const char* ignored :
         {R"({"connected":"c1"})", R"({"jwt":"t1"})", R"({"connected":"c1","jwt":"t1","count":3})",
          R"({"connected":1,"jwt":"t1"})", R"({"connected":"c1","jwt":"t\u007f"})", R"(["connected","jwt"])",
          "null", R"("c1")"}) {
        model.consume(boost::json::parse(ignored));
        EXPECT_FALSE(model.isLoggedIn()) << ignored;
        EXPECT_EQ(settings.accessToken(), std::nullopt) << ignored;
    }
    model.consume(std::nullopt);
    EXPECT_TRUE(host.sent().empty());

    model.consume(boost::json::parse(R"({"connected":"c1","jwt":"t1"})"));
    application.run();
    EXPECT_EQ(model.connectedID(), "c1");
    EXPECT_EQ(settings.accessToken(), "t1");
    EXPECT_THAT(host.sent(), ElementsAre("/api/user/info"));

    settings.setConnectedID("");
    EXPECT_FALSE(model.isLoggedIn());
}

TEST_F(AccountModel, a_user_record_rewrites_the_profile_and_is_announced) {
    int announced = 0;
    const Observation observation = application.fakePlatform.notificationCenter->observe(
        std::string(UserAccountModel::UserAccountInfoUpdated), [&](const Notification&) { ++announced; });
    settings.setConnectedID("c1");
    settings.setLastName("Old");

    model.refreshUserInfo();
    application.run();
    host.answer(0, 200,
                R"({"firstName":"Ada","registrationDate":"Mar 5, 2019 04:07:09 PM","hasPassword":true})");
    EXPECT_EQ(settings.firstName(), "Ada");
    EXPECT_EQ(settings.lastName(), std::nullopt);
    EXPECT_EQ(settings.registrationDate(), Date(std::chrono::seconds(1'551'802'029)));
    EXPECT_TRUE(settings.userHasPassword());
    EXPECT_EQ(announced, 1);

    // A failure leaves the profile as it is; a record without a date clears it.
    model.refreshUserInfo();
    application.run();
    host.answer(1, 500, "{}");
    EXPECT_EQ(settings.firstName(), "Ada");
    EXPECT_EQ(announced, 1);
    model.refreshUserInfo();
    application.run();
    host.answer(2, 200, "{}");
    EXPECT_EQ(settings.registrationDate(), std::nullopt);
    EXPECT_EQ(announced, 2);

    settings.setConnectedID(std::nullopt);
    model.refreshUserInfo();
    application.run();
    EXPECT_EQ(host.sent().size(), 3U) << "nobody is signed in";
}

TEST_F(AccountModel, names_are_saved_one_after_the_other_and_each_when_the_server_has_it) {
    settings.setConnectedID("c1");
    settings.setFirstName("Old");
    settings.setLastName("Older");
    const Task<void> task = model.updateAccountInfo("Ada", "Lovelace");
    application.run();
    EXPECT_EQ(host.sent().size(), 1U);
    host.answer(0, 200, R"({"success":true})");
    EXPECT_EQ(settings.firstName(), "Ada");
    EXPECT_EQ(host.sent().size(), 2U);
    EXPECT_FALSE(task.isCompleted());
    host.answer(1, 200, R"({"success":false})");
    ASSERT_TRUE(task.isCompleted());
    EXPECT_FALSE(task.outcome()->succeeded());
    EXPECT_EQ(settings.firstName(), "Ada");
    EXPECT_EQ(settings.lastName(), "Older");

    const Task<void> again = model.updateAccountInfo("Ada", "King");
    application.run();
    host.answer(2, 200, R"({"success":true})");
    host.answer(3, 200, R"({"success":true})");
    ASSERT_TRUE(again.isCompleted());
    EXPECT_TRUE(again.outcome()->succeeded());
    EXPECT_EQ(settings.lastName(), "King");
}

TEST_F(AccountModel, what_was_asked_for_one_user_is_not_taken_for_the_next) {
    settings.setConnectedID("c1");
    model.refreshUserInfo();
    const Task<void> task = model.updateAccountInfo("Ada", "Lovelace");
    application.run();
    settings.setConnectedID("c2");
    host.answer(0, 200, R"({"firstName":"Ada"})");
    host.answer(1, 200, R"({"success":true})");
    EXPECT_EQ(settings.firstName(), std::nullopt);
    EXPECT_EQ(host.sent().size(), 2U) << "the last name would be the next user's";
    EXPECT_FALSE(task.outcome()->succeeded());
}

TEST_F(AccountModel, names_whose_client_ends_in_between_are_cancelled) {
    std::optional<Networking> client(std::in_place, application, application.constants);
    application.networkingService = &*client;
    settings.setConnectedID("c1");
    const Task<void> task = model.updateAccountInfo("Ada", "Lovelace");
    application.run();
    application.fakePlatform.transport->answer(0, ScriptedTransport::reply(200, R"({"success":true})"));
    application.fakePlatform.httpDelegateQueue->runAll();
    application.fakePlatform.mainQueue->runNext(); // the reply has been read, its consequence waits
    client.reset();
    application.networkingService = nullptr;
    application.run();
    EXPECT_EQ(settings.firstName(), "Ada");
    ASSERT_TRUE(task.isCompleted());
    EXPECT_EQ(task.outcome()->error(), httpTransportError(HttpTransportError::cancelled));
}

TEST_F(AccountModel,
       signing_out_stops_the_job_clears_the_session_and_the_notebook_and_tells_whom_it_concerns) {
    for (const bool chosenByTheUser : {true, false}) {
        settings.setConnectedID("c1");
        settings.setAccessToken("t1");
        host.dataController->notebookEntryRepository().insertNotebookEntries(
            boost::json::parse(
                R"([{"_id":"1","problem":"x=1","savedFrom":"Solutions","lastChange":"","date":"Jan 05, 2019 03:04:05 PM"}])")
                .get_array());
        EXPECT_EQ(host.dataController->notebookEntryRepository().noteCount(), 1);
        const std::size_t sentBefore = host.sent().size();
        EXPECT_CALL(job, stopJob).WillOnce([this] {
            EXPECT_TRUE(model.isLoggedIn()) << "the job is stopped before anything is cleared";
        });
        chosenByTheUser ? model.logOut() : model.logoutUserAndPromptForLogin();
        application.run();

        EXPECT_FALSE(model.isLoggedIn());
        EXPECT_EQ(host.dataController->notebookEntryRepository().noteCount(), 0);
        if (chosenByTheUser) {
            const URLRequest request = application.fakePlatform.transport->requests().back();
            EXPECT_THAT(request.url, HasSubstr("/logout?isMobile=true"));
            EXPECT_THAT(request.headers.value("Cookie").value_or(""), HasSubstr("tq.token=t1"));
        } else {
            EXPECT_EQ(host.sent().size(), sentBefore);
        }
        EXPECT_EQ(application.logOutsTold, chosenByTheUser ? 0 : 1);
    }
}

} // namespace
} // namespace teralune
