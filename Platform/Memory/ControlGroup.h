#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace teralune {

/// The folder of the process's control group (version 2), from the texts of /proc/self/cgroup and
/// /proc/self/mountinfo. The mount point differs between systems, so it is looked up, never assumed. Absent
/// when there is no such group or when it lies outside what is mounted.
std::optional<std::filesystem::path> controlGroupFolder(std::string_view groups, std::string_view mounts);

} // namespace teralune
