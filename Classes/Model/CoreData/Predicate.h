#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace teralune {

/// A condition on notebook entries: a small tree that is written as SQL. Values never become part of the SQL:
/// the lists are numbered in the order of the tree, and the SQL reads list n from the temporary table
/// "predicateValues" (list, value), which whoever runs it fills. So a list may have any length, and equal
/// shapes give equal SQL.
class Predicate {
public:
    enum class TextAttribute { savedFrom, topic };

    static Predicate isFavorite();
    static Predicate isIn(TextAttribute attribute, std::vector<std::string> values);
    /// True for an entry that bears at least one of the tags.
    static Predicate anyTagIsIn(std::vector<std::string> tagTexts);
    /// True when all of the conditions are; without any, for every entry.
    static Predicate allOf(std::vector<Predicate> conditions);

    struct Compiled {
        std::string sql;
        std::vector<const std::vector<std::string>*> lists; ///< of the predicate, which must outlive this
    };
    /// An SQL expression over a row of "entries".
    Compiled compiled() const;

    friend bool operator==(const Predicate&, const Predicate&) = default;

private:
    enum class Kind { isFavorite, savedFromIsIn, topicIsIn, anyTagIsIn, allOf };
    Predicate(Kind kind, std::vector<std::string> values, std::vector<Predicate> conditions);
    void append(Compiled& compiled) const;

    Kind kind_;
    std::vector<std::string> values_;
    std::vector<Predicate> conditions_;
};

} // namespace teralune
