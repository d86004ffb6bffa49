#include "SolverService/Model/Suggestions.h"

#include "SolverService/Model/DemoNotebook.h"

#include <SQLiteCpp/SQLiteCpp.h>

namespace teralune::service {

namespace {

constexpr std::size_t longestProblem = 200;
constexpr int mostSuggestions = 10;

std::string withoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

} // namespace

Suggestions::Suggestions(ServerModel& model) : model_(model) {
    const ServerModel::Access database(model_);
    if ((*database).execAndGet("SELECT EXISTS(SELECT 1 FROM askedProblems)").getInt() != 0) {
        return;
    }
    SQLite::Transaction transaction(*database);
    SQLite::Statement insert(*database,
                             "INSERT INTO askedProblems(problem, plain, bucket, asked) VALUES(?, ?, ?, ?)");
    const std::vector<NoteRecord> notes = demoNotes(0);
    auto asked = static_cast<std::int64_t>(notes.size());
    for (const NoteRecord& note : notes) {
        if (!note.graph) {
            insert.bind(1, note.problem);
            insert.bind(2, withoutBlanks(note.problem));
            insert.bind(3, note.topic);
            insert.bind(4, asked--);
            insert.exec();
            insert.reset();
        }
    }
    transaction.commit();
}

void Suggestions::count(const std::string& problem, const std::string& bucket) {
    if (problem.size() > longestProblem) {
        return;
    }
    const ServerModel::Access database(model_);
    SQLite::Statement insert(*database,
                             "INSERT INTO askedProblems(problem, plain, bucket, asked) VALUES(?, ?, ?, 1) "
                             "ON CONFLICT(problem) DO UPDATE SET asked = asked + 1");
    insert.bind(1, problem);
    insert.bind(2, withoutBlanks(problem));
    insert.bind(3, bucket);
    insert.exec();
}

std::vector<SuggestedProblem> Suggestions::suggest(const std::string& typed) {
    std::vector<SuggestedProblem> suggestions;
    const std::string plain = withoutBlanks(typed);
    if (plain.empty() || plain.size() > longestProblem) {
        return suggestions;
    }
    const ServerModel::Access database(model_);
    SQLite::Statement query(*database,
                            "SELECT problem, bucket, asked, (SELECT max(asked) FROM askedProblems), "
                            "instr(plain, ?1) = 1 AS prefix FROM askedProblems WHERE instr(plain, ?1) > 0 "
                            "ORDER BY prefix DESC, asked DESC, problem LIMIT ?2");
    query.bind(1, plain);
    query.bind(2, mostSuggestions);
    while (query.executeStep()) {
        SuggestedProblem suggestion;
        suggestion.problem = query.getColumn(0).getString();
        suggestion.bucket = query.getColumn(1).getString();
        suggestion.popularity = query.getColumn(2).getInt64();
        suggestion.normalizedPopularity =
            static_cast<double>(suggestion.popularity) / static_cast<double>(query.getColumn(3).getInt64());
        suggestion.isPrefix = query.getColumn(4).getInt() != 0;
        suggestions.push_back(std::move(suggestion));
    }
    return suggestions;
}

} // namespace teralune::service
