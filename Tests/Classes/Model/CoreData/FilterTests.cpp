#include "Classes/Model/CoreData/Filter.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <set>
#include <stdlib.h>
#include <string>
#include <vector>

namespace teralune {
namespace {

/// A table in which "Solutions" sorts last and a topic has a text too.
std::string localize(std::string_view key) {
    static const std::map<std::string, std::string, std::less<>> texts = {{"Solutions", "z solver"},
                                                                          {"Graphing Calculator", "Zeichnen"},
                                                                          {"FILTER_BY_TYPE", "By type"},
                                                                          {"Algebra", "zz"}};
    const auto found = texts.find(key);
    return found != texts.end() ? found->second : std::string(key);
}

Filter fullFilter() {
    Filter filter(localize);
    filter.typeFilter.dict = {{"Solutions", false}, {"Practice", false}, {"Graphing Calculator", false}};
    filter.topicFilter.dict = {{"Algebra", false}, {"Trigonometry", false}};
    filter.tagFilter.dict = {{"exam", false}, {"Zoo", false}};
    return filter;
}

TEST(FilterTests, rows_stand_in_the_order_of_their_localized_texts) {
    const Filter filter = fullFilter();
    const std::vector<std::vector<std::string>> expected{{"Practice", "Zeichnen", "z solver"},
                                                         {"FAVORITE_STARRED"},
                                                         {"Trigonometry", "Algebra"},
                                                         {"Zoo", "exam"},
                                                         {}};
    for (int section = 0; section < 5; ++section) {
        std::vector<std::string> texts;
        for (int row = 0; row < filter.numberOfRows(section); ++row) {
            texts.push_back(filter.text(IndexPath{section, row}).value());
        }
        EXPECT_EQ(texts, expected[static_cast<std::size_t>(section)]) << section;
        EXPECT_EQ(filter.texts(section), texts) << section;
    }
    EXPECT_EQ(filter.text(IndexPath{2, 2}), std::nullopt);
    EXPECT_EQ(filter.text(IndexPath{4, 0}), std::nullopt);
}

TEST(FilterTests, a_section_without_options_has_no_header) {
    const std::vector<std::optional<std::string>> full{"By type", "FILTER_BY_FAVORITE", "FILTER_BY_TOPIC",
                                                       "FILTER_BY_TAG", std::nullopt};
    const std::vector<std::optional<std::string>> empty{std::nullopt, "FILTER_BY_FAVORITE", std::nullopt,
                                                        std::nullopt, std::nullopt};
    for (int section = 0; section < 5; ++section) {
        EXPECT_EQ(fullFilter().text(section), full[static_cast<std::size_t>(section)]);
        EXPECT_EQ(Filter(localize).text(section), empty[static_cast<std::size_t>(section)]);
    }
}

TEST(FilterTests, choosing_sets_flags_and_never_clears_one) {
    Filter filter = fullFilter();
    EXPECT_TRUE(filter.isBlank());
    EXPECT_EQ(filter.predicate(), std::nullopt);
    const Filter untouched = filter.copyFilter();
    for (const IndexPath path : {IndexPath{0, 2}, IndexPath{0, 2}, IndexPath{1, 0}, IndexPath{1, 0},
                                 IndexPath{3, 1}, IndexPath{0, 0}, IndexPath{7, 3}}) {
        filter.updateSelected(path);
    }
    EXPECT_EQ(filter.allSelected(), (std::vector<IndexPath>{{1, 0}, {0, 0}, {0, 2}, {3, 1}}));
    EXPECT_TRUE(filter.typeFilter.dict.at("Solutions"));
    EXPECT_FALSE(filter.isBlank());
    EXPECT_EQ(filter.predicate(), Predicate::allOf({Predicate::isFavorite(),
                                                    Predicate::isIn(Predicate::TextAttribute::savedFrom,
                                                                    {"Practice", "Solutions"}),
                                                    Predicate::anyTagIsIn({"exam"})}));
    EXPECT_EQ(untouched.allSelected(), std::vector<IndexPath>());
    EXPECT_DEATH(filter.updateSelected({2, 2}),
                 R"(Index 2 not found in dict \["Algebra": false, "Trigonometry": false\])");
    EXPECT_DEATH(Filter().updateSelected({3, 0}), R"(Index 0 not found in dict \[:\])");
}

TEST(FilterTests, descriptions_are_equal_exactly_when_the_choices_are) {
    const auto with = [](bool favorites, std::map<std::string, bool> topics,
                         std::map<std::string, bool> tags) {
        Filter filter;
        filter.filterFavorites = favorites;
        filter.topicFilter.dict = std::move(topics);
        filter.tagFilter.dict = std::move(tags);
        return filter.description();
    };
    EXPECT_EQ(with(false, {}, {}), with(false, {{"a", false}}, {{"b", false}}));
    const std::set<std::string> different{with(false, {}, {}),
                                          with(true, {}, {}),
                                          with(false, {{"a", true}}, {}),
                                          with(false, {}, {{"a", true}}),
                                          with(false, {}, {{"a", true}, {"b", true}}),
                                          with(false, {}, {{"a\", \"b", true}}),
                                          with(false, {}, {{"a, b", true}})};
    EXPECT_EQ(different.size(), 7U);
}

TEST(FilterTests, a_filter_that_is_given_no_texts_has_those_of_the_process) {
    const TemporaryFolder settings;
    setenv("XDG_DATA_HOME", settings.path().c_str(), 1);
    EXPECT_NE(Filter().text(1), "FILTER_BY_FAVORITE");
    EXPECT_NE(Filter().text(1), "");
}

} // namespace
} // namespace teralune
