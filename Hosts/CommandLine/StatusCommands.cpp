#include "Hosts/CommandLine/CacheProgress.h"
#include "Hosts/CommandLine/CommandContext.h"
#include "Hosts/CommandLine/CommandSet.h"
#include "Hosts/CommandLine/UserText.h"
#include "Platform/Defaults/UserDefaults.h"

#include <CLI/CLI.hpp>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

namespace teralune {
namespace {

/// How many records of cached solutions wait to be sent.
std::size_t queuedLogs(const CommandContext& context) {
    const auto queue = context.application.platform().userDefaults->array("QueryLogCache");
    return queue ? queue->size() : 0;
}

Result<void> showStatus(const CommandContext& context) {
    CommandLineApplication& application = context.application;
    const bool isSignedIn = application.userAccountModel().isLoggedIn();
    const bool isReachable = application.hasInternetConnection();
    const CacheProgress::Count count =
        CacheProgress(application.dataController().notebookEntryRepository()).count();
    const std::uint64_t bytes = application.dataController().getStorageBytes();
    const std::size_t logs = queuedLogs(context);

    std::string text = "signed in     " + (isSignedIn ? userText(application.persistence()) : "no");
    text += "\nnetwork       " + std::string(isReachable ? "connected" : "not connected");
    text += "\nnotes         " + std::to_string(count.notes);
    text += "\nsteps kept    " + std::to_string(count.cached) + " of " + std::to_string(count.cacheable);
    text += "\nstore         " + std::to_string(bytes) + " bytes";
    text += "\nqueued logs   " + std::to_string(logs);
    const boost::json::value user =
        isSignedIn ? boost::json::value(userRecord(application.persistence())) : nullptr;
    context.output.show({{"user", user},
                         {"hasInternetConnection", isReachable},
                         {"notes", count.notes},
                         {"cacheable", count.cacheable},
                         {"cached", count.cached},
                         {"storeBytes", bytes},
                         {"queuedLogs", logs}},
                        text);
    return {};
}

Result<void> resendLogs(const CommandContext& context) {
    context.application.logger().resendCachedLogs();
    context.application.settle();
    const std::size_t logs = queuedLogs(context);
    context.output.show({{"queuedLogs", logs}}, "Logs still queued: " + std::to_string(logs));
    return {};
}

} // namespace

void addStatusCommands(CommandSet& commands) {
    commands.add("status", "Show who is signed in, the network, the notebook and the store",
                 [](CommandContext& context) { return showStatus(context); });
    CLI::App& logs = commands.addGroup("logs", "The records of solutions shown from the cache");
    commands.add(
        "resend", "Send the records that could not be sent before",
        [](CommandContext& context) { return resendLogs(context); }, &logs);
}

} // namespace teralune
