#include "Hosts/CommandLine/NoteText.h"

#include "Hosts/CommandLine/Output.h"
#include "Hosts/CommandLine/UserText.h"

#include <boost/json/array.hpp>

#include <algorithm>
#include <vector>

namespace teralune {
namespace {

std::vector<std::string> sortedTags(const NotebookEntry& note) {
    std::vector<std::string> tags = note.tagStrings();
    std::sort(tags.begin(), tags.end());
    return tags;
}

} // namespace

boost::json::object noteRecord(const NotebookEntry& note) {
    boost::json::array tags;
    for (const std::string& tag : sortedTags(note))
        tags.emplace_back(tag);
    return {{"problem", textRecord(note.problem())},
            {"isFavorite", note.isFavorite().value_or(false)},
            {"savedFrom", textRecord(note.savedFrom())},
            {"topic", textRecord(note.topic())},
            {"tags", std::move(tags)},
            {"notes", textRecord(note.notes())},
            {"lastChange", dateRecord(note.lastChange())},
            {"lastCached", dateRecord(note.lastCached())},
            {"remoteID", textRecord(note.remoteID())},
            {"url", textRecord(note.url())},
            {"graph", textRecord(note.graph())}};
}

std::string noteText(const NotebookEntry& note) {
    std::string line = note.isFavorite().value_or(false) ? "★ " : "  ";
    line += Output::onOneLine(note.problem().value_or(""));
    for (const std::optional<std::string>& detail : {note.topic(), note.savedFrom()})
        if (detail && !detail->empty())
            line += "  · " + Output::onOneLine(*detail);
    for (const std::string& tag : sortedTags(note))
        line += "  #" + Output::onOneLine(tag);
    line += '\n';
    if (note.notes() && !note.notes()->empty())
        line += "      " + Output::onOneLine(*note.notes()) + '\n';
    return line;
}

} // namespace teralune
