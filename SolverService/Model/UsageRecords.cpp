#include "SolverService/Model/UsageRecords.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <boost/json.hpp>

namespace teralune::service {

void UsageRecords::add(std::string_view path, const Parameters& items) {
    const ServerModel::Access database(model_);
    SQLite::Statement insert(*database, "INSERT INTO usageRecords(path, received, items) VALUES(?, ?, ?)");
    insert.bind(1, std::string(path));
    insert.bind(2, model_.nowSeconds());
    insert.bind(3, boost::json::serialize(boost::json::value_from(items.items())));
    insert.exec();
}

std::vector<Parameters> UsageRecords::records(std::string_view path) {
    const ServerModel::Access database(model_);
    SQLite::Statement query(*database, "SELECT items FROM usageRecords WHERE path = ? ORDER BY id");
    query.bind(1, std::string(path));
    std::vector<Parameters> records;
    while (query.executeStep()) {
        using Items = std::vector<std::pair<std::string, std::string>>;
        records.emplace_back(
            boost::json::value_to<Items>(boost::json::parse(query.getColumn(0).getString())));
    }
    return records;
}

} // namespace teralune::service
