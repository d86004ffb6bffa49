#include "Classes/Model/CoreData/StoreRepair.h"
#include "Hosts/CommandLine/CommandError.h"
#include "Hosts/CommandLine/CommandSet.h"
#include "Hosts/CommandLine/HostOptions.h"
#include "Hosts/CommandLine/Output.h"

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>

namespace teralune {
namespace {

Result<void> repair(const HostOptions& options, Output& output) {
    PlatformServices::Locations locations = PlatformServices::Locations::standard();
    locations.dataFolder = options.dataFolder;
    const Result<StoreRepairReport> repaired = repairStore(locations);
    if (!repaired)
        return commandError("The notebook store can't be repaired: " + repaired.error().localizedDescription);
    const StoreRepairReport& report = repaired.value();
    const bool isNew = report.outcome == StoreRepairReport::Outcome::repaired;
    std::string text = "The notebook store can be opened; nothing was changed.";
    if (isNew)
        text = "A new notebook store is in place: saved " + std::to_string(report.notes) +
               " notes and the steps of " + std::to_string(report.steps) + "; sync fetches what is missing.";
    boost::json::value damagedFile;
    if (report.damagedFile) {
        text += "\nThe damaged one lies at " + report.damagedFile->string();
        damagedFile = report.damagedFile->string();
    }
    output.show(
        {{"repaired", isNew}, {"notes", report.notes}, {"steps", report.steps}, {"damagedFile", damagedFile}},
        text);
    return {};
}

} // namespace

void addStoreCommands(CommandSet& commands) {
    CLI::App& store = commands.addGroup("store", "The file that holds the notebook");
    commands.add(
        "repair", "Replace a damaged store by a new one with what can be read of it, and set it aside",
        [](const HostOptions& options, Output& output) { return repair(options, output); }, &store);
}

} // namespace teralune
