#pragma once

#include "Classes/Interfaces/NotebookEntryRepositoryType.h"
#include "Classes/Model/CoreData/ObjectContext.h"
#include "Platform/Foundation/DateFormatter.h"
#include "Platform/Foundation/Error.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace teralune {

class IApplication;
class MergePlan;

/// The notebook's repository over the SQLite store. DataController makes the one there is; everybody else
/// knows it by its protocol, which says how it behaves.
///
/// A refresh is two transactions, one that adds and updates and one that deletes, and a query between them
/// sees the old notes and the new. Nothing is written for a note that did not change. When the first of the
/// two can't be saved the second is not begun, so that the notebook never holds less than the server.
class NotebookEntryRepository final : public NotebookEntryRepositoryType {
public:
    /// The most entries whose steps are kept cached.
    static constexpr std::int64_t maximumEntryCountHardLimit = 20000;
    /// Where a note was saved from.
    static constexpr std::string_view Solutions = "Solutions";
    static constexpr std::string_view GraphingCalculator = "Graphing Calculator";
    static constexpr std::string_view Practice = "Practice";

    NotebookEntryRepository(std::shared_ptr<ObjectContext> managedObjectContext, IApplication& application);
    ~NotebookEntryRepository() override;

    Filter blankFilter() const override;
    void insertNotebookEntries(const boost::json::array& entries) override;
    void removeNotes(const std::vector<NotebookEntry>& notes) override;
    std::optional<std::string> nextEntryToCache() const override;
    void updateProblemWithSteps(const std::string& problem, const std::string& steps) override;
    std::optional<AttributeDictionary> getNotebookEntry(const std::string& problem) const override;
    void clear() override;
    bool exceededMaximumCachedEntries() const override;
    std::int64_t noteCount() const override;
    void updateProblem(const std::string& query, Favorite favorite) override;
    std::vector<NotebookEntry> entriesForFilter(const Filter& filter) const override;
    std::vector<std::string> notebookRequiredFields() const override;
    std::vector<std::string> allTagStrings() const override;

    /// The distinct texts of the tags, and the distinct topics of the entries.
    std::vector<std::string> allTags() const;
    std::vector<std::string> allTopics() const;

private:
    enum class Counted { entries, entriesWithSteps };
    static constexpr std::string_view couldNotFetchEntries = "Could not fetch notebook entries: ";

    using Words = std::initializer_list<std::string_view>;
    void print(Words line) const;
    void report(Words message, const Error& error) const;
    /// Run the block as the context's operations of those names do. Where it fails they report why behind the
    /// message and return false.
    bool performAndWait(Words message, ObjectContext::Block block) const;
    bool fetchAndWait(Words message, ObjectContext::Block block) const;

    MergePlan readRecords(const boost::json::array& entries) const;
    bool addAndUpdate(MergePlan& plan);
    void removeDeleted(const MergePlan& plan);
    bool deleteAll(std::string_view entityName, std::string_view script);
    std::int64_t count(Counted counted) const;
    std::vector<std::string> distinctTexts(std::string_view sql, std::string_view message) const;

    std::shared_ptr<ObjectContext> managedObjectContext_;
    DateFormatter dateFormatter_;
    IApplication& application_;
};

} // namespace teralune
