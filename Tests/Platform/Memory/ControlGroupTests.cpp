#include "Platform/Memory/ControlGroup.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

constexpr const char* unified = "29 23 0:26 / /sys/fs/cgroup rw,nosuid shared:4 - cgroup2 cgroup2 rw\n";
constexpr const char* hybrid = "31 23 0:28 / /sys/fs/cgroup rw - tmpfs tmpfs rw,mode=755\n"
                               "35 31 0:32 / /sys/fs/cgroup/memory rw - cgroup cgroup rw,memory\n"
                               "41 31 0:38 / /sys/fs/cgroup/unified rw - cgroup2 cgroup2 rw\n";
constexpr const char* container = "29 23 0:26 /box/7 /sys/fs/c\\040group rw - cgroup2 none rw\n";

TEST(ControlGroup, is_found_where_the_mount_table_says) {
    const std::tuple<const char*, const char*, std::optional<std::filesystem::path>> cases[] = {
        {"0::/user.slice/a.scope\n", unified, "/sys/fs/cgroup/user.slice/a.scope"},
        {"4:memory:/x\n0::/a\n", hybrid, "/sys/fs/cgroup/unified/a"},
        {"0::/\n", hybrid, "/sys/fs/cgroup/unified/"},
        {"0::/box/7/app\n", container, "/sys/fs/c group/app"},
        {"0::/box/8\n", container, std::nullopt},
        {"0::/../other\n", unified, std::nullopt},
        {"4:memory:/x\n", unified, std::nullopt},
        {"0::/a\n", "31 23 0:28 / /sys/fs/cgroup rw - tmpfs tmpfs rw\n", std::nullopt},
        {"0::/a\n", "41 31 - cgroup2\n\nnonsense", std::nullopt},
        {"", "", std::nullopt},
    };
    for (const auto& [groups, mounts, expected] : cases) {
        const auto found = controlGroupFolder(groups, mounts);
        ASSERT_EQ(found.has_value(), expected.has_value()) << groups << mounts;
        EXPECT_EQ(found, expected) << groups << mounts;
    }
}

} // namespace
} // namespace teralune
