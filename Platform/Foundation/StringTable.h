#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace teralune {

/// The texts of one ".strings" file by key: the property-list text form, "key" = "value"; with comments, in
/// UTF-8 (with or without a byte-order mark) or UTF-16 (with one). Of a damaged file it holds what stands
/// before the damage; of a missing file, nothing. Immutable once made.
class StringTable {
public:
    static StringTable parse(std::string_view bytes);
    static StringTable load(const std::filesystem::path& file);

    std::optional<std::string_view> text(std::string_view key) const;
    std::size_t size() const { return texts_.size(); }

private:
    struct KeyHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
    };
    std::unordered_map<std::string, std::string, KeyHash, std::equal_to<>> texts_;
};

} // namespace teralune
