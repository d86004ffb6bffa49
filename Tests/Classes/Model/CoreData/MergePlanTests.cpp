#include "Classes/Model/CoreData/MergePlan.h"
#include "Platform/Foundation/JsonMapping.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace teralune {
namespace {

struct StoredRow {
    MergePlan::StoredEntry entry;
    std::vector<std::int64_t> tags;
};

struct Case {
    const char* name;
    const char* list;
    std::vector<const char*> storedTags; ///< of the rows 1, 2, …
    std::vector<StoredRow> storedEntries;
    const char* expected;
};

MergePlan::StoredEntry stored(std::int64_t id, const char* remoteID, std::int64_t lastChange = 5) {
    MergePlan::StoredEntry entry;
    entry.id = id;
    entry.remoteID = remoteID;
    entry.lastChange = lastChange;
    entry.savedFrom = "Solutions";
    entry.isFavorite = 1;
    return entry;
}

/// What is to be done, in short: "+a(x,y)" inserts the note a with its tags, "~1=p" updates row 1 to the
/// remarks p, "1+x" and "1-2" are links, "-#2" removes tag row 2.
std::string summary(const MergePlan& plan) {
    std::string text;
    const auto remarks = [&](std::size_t note) {
        return std::string(plan.records()[plan.notes()[note].last].fields.notes.value_or(""));
    };
    for (const MergePlan::Update& update : plan.updates()) {
        text += "~" + std::to_string(update.entryID) + "=" + remarks(update.note) + " ";
    }
    for (const MergePlan::Note& note : plan.notes()) {
        if (!note.isStored) {
            text += "+" + std::string(*plan.records()[note.first].fields.problem) + "(";
            for (const std::uint32_t tag : note.tags) {
                text += std::string(plan.tagTexts()[tag]) + ",";
            }
            text += ") ";
        }
    }
    for (const MergePlan::NewLink& link : plan.newLinks()) {
        text += std::to_string(link.entryID) + "+" + std::string(plan.tagTexts()[link.tag]) + " ";
    }
    for (const MergePlan::OldLink& link : plan.oldLinks()) {
        text += std::to_string(link.entryID) + "-" + std::to_string(link.tagID) + " ";
    }
    for (const std::int64_t tag : plan.oldTags()) {
        text += "-#" + std::to_string(tag) + " ";
    }
    return text;
}

/// A record with an identifier and perhaps more; its last change is 5.
#define RECORD(more)                                                                                         \
    R"({"problem":"p","savedFrom":"Solutions","lastChange":"","date":"","isFavorite":true,)" more "}"

const Case cases[] = {
    {"what is stored as it came is left alone",
     "[" RECORD(R"("_id":"a","tags":["x","y"])") "]",
     {"x", "y"},
     {{stored(1, "a"), {1, 2}}},
     ""},
    {"a note that is not stored is inserted with its tags",
     "[" RECORD(R"("_id":"a","tags":["x","","y","x"])") "]",
     {},
     {},
     "+p(x,y,) "},
    {"a changed attribute is an update",
     "[" RECORD(R"("_id":"a","notes":"n")") "]",
     {},
     {{stored(1, "a"), {}}},
     "~1=n "},
    {"a changed time is an update", "[" RECORD(R"("_id":"a")") "]", {}, {{stored(1, "a", 6), {}}}, "~1= "},
    {"an absent text differs from an empty one",
     "[" RECORD(R"("_id":"a","topic":"")") "]",
     {},
     {{stored(1, "a"), {}}},
     "~1= "},
    {"only links that differ are written",
     "[" RECORD(R"("_id":"a","tags":["y","z","w"])") "]",
     {"x", "y", "z"},
     {{stored(1, "a"), {1, 2}}},
     "1+w 1+z 1-1 -#1 "},
    {"a list of tags that holds something else is no list of tags",
     "[" RECORD(R"("_id":"a","tags":["x",5])") "," RECORD(R"("_id":"b","tags":["x"])") "]",
     {"x"},
     {{stored(1, "a"), {1}}, {stored(2, "b"), {1}}},
     "1-1 "},
    {"of two records the first gives the problem, the last the rest, and both their tags",
     R"([{"_id":"a","problem":"first","savedFrom":"","lastChange":"","date":"","notes":"1","tags":["x"]},)"
     R"({"_id":"a","problem":"second","savedFrom":"","lastChange":"","date":"","notes":"2","tags":["y"]}])",
     {},
     {},
     "+first(x,y,) "},
    {"a second record updates what is stored",
     "[" RECORD(R"("_id":"a","notes":"1")") "," RECORD(R"("_id":"a","notes":"2")") "]",
     {},
     {{stored(1, "a"), {}}},
     "~1=2 "},
    {"an unusable record before a usable one of the same note does no harm",
     R"([{"_id":"a"},)" RECORD(R"("_id":"a","tags":["x"])") "]",
     {},
     {{stored(1, "a"), {}}},
     "1+x "},
    {"of two rows with one identifier the first is the note",
     "[" RECORD(R"("_id":"a","notes":"n","tags":["x"])") "]",
     {"x"},
     {{stored(1, "a"), {}}, {stored(2, "a"), {1}}},
     "~1=n 1+x 2-1 "},
    {"of two rows with one tag text the first is the tag",
     "[" RECORD(R"("_id":"a","tags":["x"])") "]",
     {"x", "x"},
     {{stored(1, "a"), {2}}},
     "1+x 1-2 -#2 "},
};

TEST(MergePlanTests, plans_what_differs_and_nothing_else) {
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const boost::json::value list = parseJson(one.list).value();
        MergePlan plan;
        for (const boost::json::value& element : list.get_array()) {
            NotebookEntryRecord record = NotebookEntryRecord::read(element);
            if (record.isComplete()) {
                plan.add(std::move(record), Date(std::chrono::milliseconds(5)));
            } else {
                plan.addUnusable(record.id);
            }
        }
        plan.endList();
        std::int64_t tagID = 0;
        for (const char* text : one.storedTags) {
            plan.meetTag(++tagID, text);
        }
        for (const StoredRow& row : one.storedEntries) {
            plan.meetEntry(row.entry, row.tags);
        }
        EXPECT_EQ(summary(plan), one.expected);
        EXPECT_TRUE(plan.isListed("a"));
        EXPECT_FALSE(plan.isListed("elsewhere") || plan.isListed(std::nullopt));
    }
}

TEST(NotebookEntryRecordTests, a_member_of_another_type_is_absent) {
    const std::tuple<const char*, std::optional<bool>, std::optional<std::string_view>> table[] = {
        {R"({"isFavorite":true,"graph":"{\"a\": 1}"})", true, "{\"a\": 1}"},
        {R"({"isFavorite":0,"graph":{"b" : [1, {"c":"é"}]}})", false, R"({"b":[1,{"c":"é"}]})"},
        {R"({"isFavorite":1.0,"graph":{}})", true, "{}"},
        {R"({"isFavorite":2,"graph":[1]})", std::nullopt, std::nullopt},
        {R"({"isFavorite":"true","graph":null})", std::nullopt, std::nullopt},
        {R"({"isFavorite":null,"graph":5})", std::nullopt, std::nullopt},
        {R"(["isFavorite"])", std::nullopt, std::nullopt},
    };
    for (const auto& [json, isFavorite, graph] : table) {
        const boost::json::value value = parseJson(json).value();
        const NotebookEntryRecord record = NotebookEntryRecord::read(value);
        EXPECT_EQ(record.isFavorite, isFavorite) << json;
        EXPECT_EQ(record.graph(), graph) << json;
    }
}

} // namespace
} // namespace teralune
