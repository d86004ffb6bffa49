#include "Platform/Memory/ControlGroup.h"

#include <sstream>
#include <string>
#include <vector>

namespace teralune {
namespace {

/// A path of the mount table, in which the kernel writes white space and backslashes as three octal digits.
std::string unescaped(const std::string& field) {
    const auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1]) && isOctal(field[i + 2]) &&
            isOctal(field[i + 3])) {
            text += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                      (field[i + 3] - '0'));
            i += 3;
        } else {
            text += field[i];
        }
    }
    return text;
}

struct Mount {
    std::filesystem::path root;
    std::filesystem::path point;
};

std::optional<Mount> unifiedMount(std::string_view mounts) {
    std::istringstream lines{std::string(mounts)};
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::vector<std::string> fields;
        for (std::string field; words >> field && field != "-";)
            fields.push_back(std::move(field));
        std::string type;
        // Behind the dash; before it the fourth field is the root of the mount and the fifth where it is.
        if (words >> type && type == "cgroup2" && fields.size() > 4)
            return Mount{unescaped(fields[3]), unescaped(fields[4])};
    }
    return std::nullopt;
}

std::optional<std::filesystem::path> unifiedGroup(std::string_view groups) {
    std::istringstream lines{std::string(groups)};
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("0::/"))
            return std::filesystem::path(line.substr(3));
    }
    return std::nullopt;
}

} // namespace

std::optional<std::filesystem::path> controlGroupFolder(std::string_view groups, std::string_view mounts) {
    const std::optional<Mount> mount = unifiedMount(mounts);
    const std::optional<std::filesystem::path> group = unifiedGroup(groups);
    if (!mount || !group)
        return std::nullopt;
    const std::filesystem::path inside = group->lexically_relative(mount->root);
    if (inside.empty() || *inside.begin() == "..")
        return std::nullopt;
    return (mount->point / inside).lexically_normal();
}

} // namespace teralune
