#include "Platform/Database/TableSalvage.h"

#include "Platform/Database/Database.h"
#include "Platform/Database/DatabaseError.h"
#include "Platform/Foundation/Utf8.h"

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

namespace teralune {
namespace {

/// No store comes to a number beyond it by itself. A damaged one that was taken over would leave no numbers
/// for new rows.
constexpr std::int64_t highestPlausibleKey = std::int64_t{1} << 40;

struct Column {
    std::string name;
    bool isText = false;
};

struct Table {
    std::string name;
    /// By what its rows are sorted in the file.
    std::string key;
    std::vector<Column> columns;
};

Result<std::vector<Table>> tablesOf(Database& database) {
    std::vector<Table> tables;
    Statement columns = database.statement("SELECT t.name, t.wr, c.name, c.type = 'TEXT', c.pk "
                                           "FROM pragma_table_list AS t, pragma_table_info(t.name) AS c "
                                           "WHERE t.schema = 'main' AND t.type = 'table' "
                                           "AND t.name NOT LIKE 'sqlite%' ORDER BY t.name, c.cid",
                                           Database::Reuse::once);
    while (columns.nextRow()) {
        if (tables.empty() || tables.back().name != columns.text(0)) {
            tables.push_back({std::string(columns.text(0)), "rowid", {}});
        }
        if (columns.integer(1) != 0 && columns.integer(4) == 1) {
            tables.back().key = columns.text(2);
        }
        tables.back().columns.push_back({std::string(columns.text(2)), columns.integer(3) != 0});
    }
    if (Result<void> result = columns.result(); !result) {
        return result.error();
    }
    return tables;
}

/// The columns of a table, by which a definition that is damaged and still can be parsed is told.
std::string definitionIn(Database& database, const std::string& table) {
    Statement columns =
        database.statement("SELECT group_concat(name || ' ' || type || ' ' || pk) FROM pragma_table_info(?)");
    columns.bind(1, table);
    return columns.nextRow() ? columns.optionalString(0).value_or("") : "";
}

/// The copy of one table. Its SQL is put together from names in the whole file, which are the program's own.
class TableCopy {
public:
    TableCopy(Database& damaged, Database& whole, const Table& table, KeySearch& search)
        : damaged_(damaged)
        , table_(table)
        , insert_(whole.statement(insertion(table), Database::Reuse::once))
        , up_(selection(table, "ASC"))
        , down_(selection(table, "DESC"))
        , search_(search)
        , attemptsForOthers_(search.attempts / 2) {}

    /// Whether the damaged file has such a table, in a schema that can be read.
    Result<bool> prepare() {
        // Under the same name another program's file may have a view, whose rows need never end.
        Statement kind = damaged_.statement("SELECT 1 FROM pragma_table_list "
                                            "WHERE schema = 'main' AND type = 'table' AND name = ?");
        kind.bind(1, table_.name);
        const bool isTable = kind.nextRow();
        const Result<void> result = isTable ? damaged_.statement(up_).result() : kind.result();
        return result || isUnreadable(result.error()) ? Result<bool>(isTable && result) : result.error();
    }

    Result<void> run() {
        // First come the large ones, so that what is found early is spread over the table.
        std::deque<Range> ranges{{1, highestPlausibleKey}};
        do {
            Range range = ranges.front();
            ranges.pop_front();
            for (const bool isUpwards : {true, false}) {
                if (Result<void> walked = walk(range, isUpwards); !walked) {
                    return walked;
                }
            }
            if (range.low >= range.high) {
                continue;
            }
            const std::int64_t middle = range.low + (range.high - range.low) / 2;
            ranges.push_back({range.low, middle});
            ranges.push_back({middle + 1, range.high});
        } while (!ranges.empty() && search_.attempts > attemptsForOthers_);
        return {};
    }

private:
    /// The keys, both included, of which nothing is known yet.
    struct Range {
        std::int64_t low = 0;
        std::int64_t high = 0;
        bool isEmpty() const { return low > high; }
    };

    static std::string selection(const Table& table, const std::string& order) {
        std::string types;
        std::string names;
        for (const Column& column : table.columns) {
            types += (types.empty() ? "" : " AND ") + ("typeof(\"" + column.name + "\") IN ('null', '") +
                     (column.isText ? "text')" : "integer')");
            names += ", \"" + column.name + "\"";
        }
        return "SELECT " + table.key + ", " + types + names + " FROM \"" + table.name +
               "\" NOT INDEXED WHERE " + table.key + " BETWEEN ? AND ? ORDER BY " + table.key + " " + order;
    }

    static std::string insertion(const Table& table) {
        std::string names;
        std::string values;
        for (const Column& column : table.columns) {
            names += (names.empty() ? "\"" : ", \"") + column.name + "\"";
            values += values.empty() ? "?" : ", ?";
        }
        return "INSERT OR IGNORE INTO \"" + table.name + "\"(" + names + ") VALUES (" + values + ")";
    }

    /// Copies the rows of the range from one end on, and takes from it what has been seen: all of it, unless
    /// a page can't be read.
    Result<void> walk(Range& range, bool isUpwards) {
        // A single key needs no second look from its other side.
        if (range.isEmpty() || (!isUpwards && range.low == range.high)) {
            return {};
        }
        bool hasRows = false;
        Statement rows = damaged_.statement(isUpwards ? up_ : down_);
        rows.bindAll(range.low, range.high);
        while (rows.nextRow()) {
            hasRows = true;
            (isUpwards ? range.low : range.high) = rows.integer(0) + (isUpwards ? 1 : -1);
            if (Result<void> copied = copyRow(rows); !copied) {
                return copied;
            }
        }
        Result<void> result = rows.result();
        if (result) {
            range = {1, 0};
            return {};
        }
        if (!isUnreadable(result.error())) {
            return result;
        }
        --search_.attempts;
        // All keys beyond a last page that can't be read lead to it, and so give no end to search for.
        if (!isUpwards && !hasRows) {
            range.high = std::min(range.high, search_.highestKey);
        }
        return {};
    }

    Result<void> copyRow(Statement& row) {
        bool isSound = row.integer(1) != 0;
        for (std::size_t index = 0; index < table_.columns.size() && isSound; ++index) {
            const int column = static_cast<int>(index) + 2;
            const int parameter = static_cast<int>(index) + 1;
            if (table_.columns[index].isText) {
                const std::optional<std::string_view> text = row.optionalText(column);
                isSound = !text || isValidUtf8(*text);
                insert_.bind(parameter, text);
            } else {
                insert_.bind(parameter, row.optionalInteger(column));
            }
        }
        // A text that was too long for the memory reads as none, and the row's statement has failed.
        return isSound && row.result() ? insert_.run() : Result<void>();
    }

    Database& damaged_;
    const Table& table_;
    Statement insert_;
    std::string up_;
    std::string down_;
    KeySearch& search_;
    const std::int64_t attemptsForOthers_;
};

} // namespace

Result<SalvagedTables> salvageTables(Database& damaged, Database& whole, KeySearch& search) {
    const Result<std::vector<Table>> tables = tablesOf(whole);
    if (!tables) {
        return tables.error();
    }
    SalvagedTables salvaged;
    for (const Table& table : tables.value()) {
        const auto isEmpty = [&] {
            return whole.integer("SELECT NOT EXISTS(SELECT 1 FROM \"" + table.name + "\")");
        };
        const Result<std::int64_t> wasEmpty = isEmpty();
        if (!wasEmpty) {
            return wasEmpty.error();
        }
        if (wasEmpty.value() == 0) {
            continue;
        }
        TableCopy copy(damaged, whole, table, search);
        const Result<bool> found = copy.prepare();
        const Result<void> copied = !found ? found.error() : found.value() ? copy.run() : Result<void>();
        const Result<std::int64_t> isStillEmpty = isEmpty();
        if (!copied || !isStillEmpty) {
            return !copied ? copied.error() : isStillEmpty.error();
        }
        salvaged.hasAny |= found.value();
        salvaged.hasAll &=
            found.value() && definitionIn(damaged, table.name) == definitionIn(whole, table.name);
        salvaged.haveAllRows &= isStillEmpty.value() == 0;
    }
    return salvaged;
}

} // namespace teralune
