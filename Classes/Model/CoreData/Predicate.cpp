#include "Classes/Model/CoreData/Predicate.h"

#include <utility>

namespace teralune {

Predicate::Predicate(Kind kind, std::vector<std::string> values, std::vector<Predicate> conditions)
    : kind_(kind)
    , values_(std::move(values))
    , conditions_(std::move(conditions)) {}

Predicate Predicate::isFavorite() {
    return {Kind::isFavorite, {}, {}};
}

Predicate Predicate::isIn(TextAttribute attribute, std::vector<std::string> values) {
    return {
        attribute == TextAttribute::savedFrom ? Kind::savedFromIsIn : Kind::topicIsIn, std::move(values), {}};
}

Predicate Predicate::anyTagIsIn(std::vector<std::string> tagTexts) {
    return {Kind::anyTagIsIn, std::move(tagTexts), {}};
}

Predicate Predicate::allOf(std::vector<Predicate> conditions) {
    return {Kind::allOf, {}, std::move(conditions)};
}

Predicate::Compiled Predicate::compiled() const {
    Compiled compiled;
    append(compiled);
    return compiled;
}

void Predicate::append(Compiled& compiled) const {
    const auto listQuery = [&] {
        compiled.lists.push_back(&values_);
        return "(SELECT value FROM temp.predicateValues WHERE list = " +
               std::to_string(compiled.lists.size()) + ")";
    };
    switch (kind_) {
    case Kind::isFavorite:
        compiled.sql += "entries.isFavorite = 1";
        break;
    case Kind::savedFromIsIn:
        compiled.sql += "entries.savedFrom IN " + listQuery();
        break;
    case Kind::topicIsIn:
        compiled.sql += "entries.topic IN " + listQuery();
        break;
    case Kind::anyTagIsIn:
        compiled.sql += "entries.id IN (SELECT links.entryID FROM tags JOIN links ON links.tagID = tags.id "
                        "WHERE tags.tagText IN " +
                        listQuery() + ")";
        break;
    case Kind::allOf:
        compiled.sql += "(1";
        for (const Predicate& condition : conditions_) {
            compiled.sql += " AND ";
            condition.append(compiled);
        }
        compiled.sql += ")";
        break;
    }
}

} // namespace teralune
