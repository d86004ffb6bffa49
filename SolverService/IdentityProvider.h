#pragma once

#include "Platform/Foundation/Result.h"
#include "SolverService/Http/Parameters.h"
#include "SolverService/Model/ServerModel.h"

#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace teralune::service {

/// Someone with an account at an identity provider.
struct Person {
    std::string id;
    std::string firstName;
    std::string lastName;
    std::optional<std::string> email;

    friend bool operator==(const Person&, const Person&) = default;
};

/// The identity providers that users may sign in with, played by the service itself: an authorization
/// endpoint that issues codes without asking anyone, and the check that the service makes of what a client
/// brings back. Used from any thread.
class IdentityProvider {
public:
    /// Knows one person at the start, who is also the one at the browser.
    explicit IdentityProvider(WallClock clock);

    /// Whom the next authorization is for; without a person, the user refuses it.
    void setPersonAtBrowser(std::optional<Person> person);
    /// Makes a person known, so that a profile of theirs is believed.
    void addPerson(const Person& person);

    /// Where an authorization request sends the browser: to its redirect address, with a code or with an
    /// error. Fails when that address itself can't be trusted.
    Result<std::string> authorize(const Parameters& request);

    /// Whom a code was issued for. A code is good once, for five minutes, with the redirect address that
    /// it was issued to and the verifier of its challenge.
    std::optional<Person> redeem(const std::string& code, const std::string& verifier,
                                 const std::string& redirectAddress);
    /// The person with that identifier and e-mail address.
    std::optional<Person> confirm(const std::string& id, const std::optional<std::string>& email) const;

private:
    struct Grant {
        Person person;
        std::string challenge;
        std::string redirectAddress;
        std::chrono::system_clock::time_point issued;
    };

    WallClock clock_;
    mutable std::mutex mutex_;
    std::optional<Person> atBrowser_;
    std::vector<Person> persons_;
    std::map<std::string, Grant> grants_;
};

} // namespace teralune::service
