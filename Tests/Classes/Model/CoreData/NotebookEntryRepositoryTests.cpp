#include "Tests/Classes/Model/CoreData/StoreFixture.h"

#include <thread>

namespace teralune {
namespace {

constexpr const char* threeNotes =
    R"([{"_id":"1","problem":"x=1","savedFrom":"Solutions","lastChange":"l","date":"Jan 05, 2019 03:04:05 PM",)"
    R"("isFavorite":true,"topic":"Algebra","notes":"n","url":"u","tags":["b","a"]},)"
    R"({"_id":"2","problem":"y=2","savedFrom":"Practice","lastChange":"l","date":"Jan 06, 2019 12:04:05 AM","tags":["b"]},)"
    R"({"_id":"3","problem":"graph","savedFrom":"Graphing Calculator","lastChange":"l","date":"2019-01-05",)"
    R"("graph":{"f" : ["x^2"]}}])";

using Date = teralune::Date;

Date moment(std::int64_t seconds) {
    return Date(std::chrono::seconds(seconds));
}

class NotebookEntryRepositoryTests : public StoreFixture {
protected:
    /// Filters the store and gives the problems, newest first.
    std::vector<std::string> problems(const std::function<void(Filter&)>& choose) {
        Filter filter = repository().blankFilter();
        choose(filter);
        std::vector<std::string> result;
        for (const NotebookEntry& one : repository().entriesForFilter(filter)) {
            result.push_back(one.problem().value());
        }
        return result;
    }
};

TEST_F(NotebookEntryRepositoryTests, a_refresh_stores_every_attribute_and_says_what_it_did) {
    merge(threeNotes);
    EXPECT_EQ(takeLines(),
              (Texts{"Got 3 notebook entries from server.", "Date was in wrong format: 2019-01-05",
                     "Found 0 entries to delete.", "Completed refreshing entries in database."}));
    const std::vector<NotebookEntry> all = notes();
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0].problem(), "y=2");
    EXPECT_EQ(all[0].lastChange(), moment(1546733045));
    EXPECT_EQ(all[0].isFavorite(), std::nullopt);
    EXPECT_EQ(all[1].remoteID(), "1");
    EXPECT_EQ(all[1].isFavorite(), true);
    EXPECT_EQ(all[1].notes(), "n");
    EXPECT_EQ(all[1].lastChange(), moment(1546700645)) << "15:04:05 on the fifth, in UTC";
    EXPECT_EQ(all[1].savedFrom(), "Solutions");
    EXPECT_EQ(all[1].topic(), "Algebra");
    EXPECT_EQ(all[1].url(), "u");
    EXPECT_EQ(all[2].lastChange(), std::nullopt) << "without a time a note stands last";
    EXPECT_EQ(all[2].graph(), R"({"f":["x^2"]})");
    EXPECT_EQ(tagsByProblem(), (std::map<std::string, std::set<std::string>>{
                                   {"x=1", {"a", "b"}}, {"y=2", {"b"}}, {"graph", {}}}));
}

TEST_F(NotebookEntryRepositoryTests, the_store_follows_the_server_and_keeps_cached_steps) {
    merge(threeNotes);
    repository().updateProblemWithSteps("y=2", "{steps}");
    takeLines();
    merge(
        R"([{"_id":"2","problem":"another","savedFrom":"Solutions","lastChange":"","date":"","tags":["c"]},)"
        R"({"_id":"4","savedFrom":"Solutions","date":"d","lastChange":5},{"_id":"1","problem":"x=1"}, 7])");
    EXPECT_EQ(takeLines(),
              (Texts{"Got 4 notebook entries from server.", "Date was in wrong format: ",
                     "Item could not be processed!! ID: 4 Problem:  lastChange:  Date: d",
                     "Item could not be processed!! ID: 1 Problem: x=1 lastChange:  Date: ",
                     "Item could not be processed!! ID:  Problem:  lastChange:  Date: ",
                     "Found 1 entries to delete.", "Completed refreshing entries in database."}));
    EXPECT_EQ(tagsByProblem(), (std::map<std::string, std::set<std::string>>{{"x=1", {}}, {"y=2", {"c"}}}));
    EXPECT_EQ(note("y=2").stepsData(), "{steps}");
    EXPECT_EQ(note("y=2").savedFrom(), "Solutions");
    EXPECT_EQ(repository().allTagStrings(), Texts{"c"});
    execute("UPDATE entries SET remoteID = NULL WHERE problem = 'x=1'");
    merge(R"([{"_id":"2"}])");
    EXPECT_EQ(repository().noteCount(), 1);
    merge("[]");
    for (const char* table : {"entries", "tags", "links", "steps"}) {
        EXPECT_EQ(number(std::string("SELECT count(*) FROM ") + table), 0) << table;
    }
}

TEST_F(NotebookEntryRepositoryTests, the_same_list_again_writes_no_byte) {
    merge(threeNotes);
    repository().updateProblemWithSteps("x=1", "{steps}");
    const auto bytes = [this] {
        return TemporaryFolder::read(file) + TemporaryFolder::read(file.string() + "-wal");
    };
    const std::string before = bytes();
    merge(threeNotes);
    EXPECT_TRUE(bytes() == before);
    EXPECT_EQ(note("x=1").stepsData(), "{steps}");
}

TEST_F(NotebookEntryRepositoryTests, the_next_entry_to_cache_is_the_newest_that_is_no_graph) {
    EXPECT_EQ(repository().nextEntryToCache(), std::nullopt);
    merge(threeNotes);
    execute("INSERT INTO entries(problem, lastChange, savedFrom) VALUES ('no source', 5, NULL), "
            "('x=1', 4, 'Practice'), ('newest graph', 9e15, 'Graphing Calculator')");
    std::vector<std::string> order;
    application.fakePlatform.clock->set(moment(77));
    while (const std::optional<std::string> problem = repository().nextEntryToCache()) {
        order.push_back(*problem);
        repository().updateProblemWithSteps(*problem, "steps of " + *problem);
    }
    EXPECT_EQ(order, (Texts{"y=2", "x=1", "no source"}));
    EXPECT_EQ(number("SELECT count(*) FROM steps WHERE stepsData = 'steps of x=1'"), 2)
        << "a problem saved twice";
    EXPECT_EQ(note("y=2").lastCached(), moment(77));
    repository().updateProblemWithSteps("x=1", "steps");
    repository().updateProblemWithSteps("nobody's problem", "steps");
    EXPECT_EQ(number("SELECT value FROM stepsCount"), 4) << "steps that are replaced are counted once";
    EXPECT_EQ(repository().getNotebookEntry("graph")->count("stepsData"), 0U);
}

TEST_F(NotebookEntryRepositoryTests, caching_stops_beyond_twenty_thousand_entries_with_steps) {
    execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20002) "
            "INSERT INTO entries(problem, isCached) SELECT 'p' || i, i <= 20000 FROM n;"
            "INSERT INTO steps SELECT id, 0, 's' FROM entries WHERE isCached");
    takeLines();
    EXPECT_FALSE(repository().exceededMaximumCachedEntries());
    EXPECT_EQ(takeLines(), Texts{"Count found 20000 notes."});
    EXPECT_EQ(repository().nextEntryToCache(), "p20002");
    repository().updateProblemWithSteps("p20002", "s");
    EXPECT_TRUE(repository().exceededMaximumCachedEntries());
    EXPECT_EQ(repository().nextEntryToCache(), std::nullopt);
    repository().removeNotes({note("p1"), note("p2"), note("p20001")});
    takeLines();
    EXPECT_FALSE(repository().exceededMaximumCachedEntries());
    EXPECT_TRUE(printed("Count found 19999 notes."));
    repository().clear();
    EXPECT_FALSE(repository().exceededMaximumCachedEntries());
    EXPECT_TRUE(printed("Count found 0 notes."));
}

TEST_F(NotebookEntryRepositoryTests, a_star_goes_to_the_first_note_of_a_problem) {
    merge(threeNotes);
    EXPECT_EQ(repository().getNotebookEntry("X=1"), std::nullopt);
    execute("INSERT INTO entries(problem, isFavorite) VALUES ('y=2', 0)");
    repository().updateProblem("y=2", Favorite{true});
    EXPECT_EQ(number("SELECT group_concat(ifnull(isFavorite, 7), '') FROM entries WHERE problem = 'y=2'"),
              10);
    repository().updateProblem("y=2", Favorite{false});
    EXPECT_EQ(number("SELECT count(*) FROM entries WHERE isFavorite"), 1);
    EXPECT_DEATH(repository().updateProblem("nobody's", Favorite{true}), "nobody's");
}

TEST_F(NotebookEntryRepositoryTests, a_filter_narrows_the_list_by_any_option_of_each_section) {
    merge(threeNotes);
    const std::string strange("it's \"\0\xF0\x9F\x90\xA2", 11);
    note("graph").setTags(std::vector{strange}, context(), reporter);
    const Filter blank = repository().blankFilter();
    using Options = std::map<std::string, bool>;
    EXPECT_EQ(blank.topicFilter.dict, (Options{{"Algebra", false}}));
    EXPECT_EQ(blank.tagFilter.dict, (Options{{"a", false}, {"b", false}, {strange, false}}));
    EXPECT_TRUE(blank.isBlank() && blank.typeFilter.localized && !blank.tagFilter.localized);
    using Problems = std::vector<std::string>;
    EXPECT_EQ(problems([](Filter&) {}), (Problems{"y=2", "x=1", "graph"}));
    EXPECT_EQ(problems([](Filter& filter) { filter.filterFavorites = true; }), Problems{"x=1"});
    EXPECT_EQ(problems([](Filter& filter) { filter.tagFilter.dict["b"] = true; }), (Problems{"y=2", "x=1"}));
    EXPECT_EQ(problems([&](Filter& filter) { filter.tagFilter.dict.at(strange) = true; }), Problems{"graph"});
    EXPECT_EQ(problems([](Filter& filter) {
                  filter.typeFilter.dict.at("Solutions") = filter.typeFilter.dict.at("Practice") = true;
                  filter.tagFilter.dict.at("a") = true;
              }),
              Problems{"x=1"});
    EXPECT_EQ(problems([](Filter& filter) {
                  filter.topicFilter.dict.at("Algebra") = true;
                  filter.typeFilter.dict.at("Practice") = true;
              }),
              Problems{});
    EXPECT_EQ(problems([](Filter& filter) {
                  for (int tag = 0; tag < 300'000; ++tag) {
                      filter.tagFilter.dict[std::to_string(tag)] = true;
                  }
                  filter.tagFilter.dict["a"] = true;
              }),
              Problems{"x=1"});
}

TEST_F(NotebookEntryRepositoryTests, a_listed_note_stays_valid_whatever_happens_to_the_store) {
    merge(threeNotes);
    const std::vector<NotebookEntry> before = notes();
    const std::vector<NotebookEntry> untouched = notes();
    const NotebookEntry copy = before[1];
    EXPECT_EQ(copy.savedFrom(), "Solutions");
    repository().removeNotes({before[1], NotebookEntry({.problem = "in no store"})});
    EXPECT_EQ(repository().noteCount(), 2);
    EXPECT_EQ(copy.tagStrings().size(), 2U) << "read before it was deleted";
    EXPECT_EQ(untouched[1].problem(), "x=1");
    EXPECT_EQ(untouched[1].savedFrom(), std::nullopt) << "not read before it was deleted";
    EXPECT_EQ(untouched[0].savedFrom(), "Practice");
    const std::vector<NotebookEntry> late = notes();
    merge(threeNotes);
    EXPECT_EQ(note("x=1").rowID(), 4) << "a number is not given out twice";
    controller.reset();
    EXPECT_EQ(late[0].tagStrings(), Texts());
    EXPECT_EQ(late[0].stepsData(), std::nullopt);
}

TEST_F(NotebookEntryRepositoryTests, tags_and_remarks_of_a_note_are_changed_in_the_store_and_in_the_value) {
    merge(threeNotes);
    NotebookEntry changed = note("y=2");
    changed.setTags(std::nullopt, context(), reporter);
    changed.setTags(Texts{"new", "", "new", "a"}, context(), reporter);
    changed.removeTags({"b", "no such tag"}, context(), reporter);
    changed.setNotes("typed", context(), reporter);
    EXPECT_EQ(changed.tagStrings(), (Texts{"new", "a"}));
    EXPECT_EQ(changed.notes(), "typed");
    EXPECT_EQ(tagsByProblem().at("y=2"), (std::set<std::string>{"a", "new"}));
    EXPECT_EQ(note("y=2").notes(), "typed");
    EXPECT_EQ(repository().allTagStrings(), (Texts{"a", "b", "new"}));
    NotebookEntry gone = note("x=1");
    repository().removeNotes({gone});
    gone.setTags(Texts{"late"}, context(), reporter);
    EXPECT_EQ(number("SELECT count(*) FROM tags WHERE tagText = 'late'"), 0);
    NotebookEntry preview({.tagStrings = {"a"}});
    preview.setTags(Texts{"a", "b", ""}, context(), reporter);
    EXPECT_EQ(preview.tagStrings(), (Texts{"a", "b"}));
}

} // namespace
} // namespace teralune
