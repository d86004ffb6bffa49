#pragma once

#include "Classes/Networking/Networking.h"
#include "Tests/Support/FakeApplication.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace teralune {

/// A client whose server is the test.
class NetworkingFixture : public testing::Test {
protected:
    FakeApplication application;
    std::optional<Networking> networking{std::in_place, application, application.constants};
    ScriptedTransport& transport = *application.fakePlatform.transport;

    /// Lets what is still under way end.
    void TearDown() override {
        networking.reset();
        application.run();
    }

    static TransferOutcome reply(int status, std::string body) {
        return ScriptedTransport::reply(status, std::move(body));
    }
    void answer(std::size_t index, TransferOutcome outcome) {
        transport.answer(index, std::move(outcome));
        application.run();
    }
    void answerEverythingWith(const TransferOutcome& outcome) {
        transport.setScript([outcome](const URLRequest&) { return outcome; });
        application.run();
    }
    std::string cookies(std::size_t index) const {
        return transport.requests().at(index).headers.value("Cookie").value_or("");
    }
    std::vector<std::string> urls() const {
        std::vector<std::string> urls;
        for (const URLRequest& request : transport.requests())
            urls.push_back(request.url);
        return urls;
    }
};

} // namespace teralune
