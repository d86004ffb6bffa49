#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teralune::benchmarks {

/// What somebody would write who only had to load the server's list once: parse, one transaction, prepared
/// statements, the same schema, settings and rows. It looks nothing up and compares nothing.
class HandWrittenLoader {
public:
    HandWrittenLoader(const std::filesystem::path& folder, const std::filesystem::path& resources);
    ~HandWrittenLoader();
    void load(std::string_view reply);

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// A plain SELECT of a list's columns into plain structs.
class HandWrittenReader {
public:
    struct Row {
        std::int64_t id = 0;
        std::optional<std::string> problem;
        std::optional<bool> isFavorite;
        std::optional<std::string> remoteID;
        std::optional<std::string> notes;
    };

    explicit HandWrittenReader(const std::filesystem::path& file);
    ~HandWrittenReader();
    std::vector<Row> list();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace teralune::benchmarks
