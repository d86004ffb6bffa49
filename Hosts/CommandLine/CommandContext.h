#pragma once

#include "Hosts/CommandLine/CommandError.h"
#include "Hosts/CommandLine/CommandLineApplication.h"
#include "Hosts/CommandLine/Output.h"
#include "Hosts/CommandLine/Waiting.h"

#include <string>
#include <string_view>

namespace teralune {

/// What a command works with, and the few things that most of them say. Main thread.
struct CommandContext {
    CommandLineApplication& application;
    Output& output;

    /// The text of a localization key in the interface language.
    std::string text(std::string_view key) const;
    /// Why a request failed, as far as a user needs to know.
    Error requestFailure() const;
    /// The server's own text where it gave one.
    Error requestFailure(const Error& error) const;
    /// Fails unless somebody is signed in.
    Result<void> requireSignedIn() const;

    template<class Value>
    Value waitFor(UniqueFunction<void(UniqueFunction<void(Value)>)> start) const {
        return teralune::waitFor<Value>(*application.mainQueue(), std::move(start));
    }
    template<class Value>
    Result<Value> waitFor(const Task<Value>& task) const {
        return teralune::waitFor(application.mainQueue(), task);
    }
};

} // namespace teralune
