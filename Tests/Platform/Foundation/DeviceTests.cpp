#include "Platform/Device/Device.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

TEST(LinuxDevice, names_the_model_by_the_field_that_a_person_would_know) {
    using Files = std::vector<std::pair<std::string, std::string>>;
    const std::string firmware = "sys/class/dmi/id/";
    const std::pair<Files, std::string> cases[] = {
        {{}, "Linux"},
        {{{firmware + "product_name", "XPS 13 9310\n"}}, "XPS 13 9310"},
        {{{firmware + "product_name", "20XWCTO1WW\n"}, {firmware + "product_version", "Carbon Gen 9\n"}},
         "Carbon Gen 9"},
        {{{firmware + "product_name", "Model\n"}, {firmware + "product_version", "1.0\n"}}, "Model"},
        {{{firmware + "product_name", "To Be Filled By O.E.M.\n"}, {firmware + "sys_vendor", "Maker\n"}},
         "Maker"},
        {{{"proc/device-tree/model", std::string("Board 4 Model B\0", 16)}}, "Board 4 Model B"},
        {{{firmware + "product_name", " a\r\x1B[31m\x7F\xFF;\n"}}, "a[31m\uFFFD;"},
        {{{firmware + "product_name", std::string(5000, 'x')}}, std::string(100, 'x')},
    };
    for (const auto& [files, expected] : cases) {
        const TemporaryFolder root;
        for (const auto& [name, contents] : files) {
            root.write(name, contents);
        }
        EXPECT_EQ(LinuxDevice(root.path().string()).modelDescription(), expected);
    }
}

TEST(LinuxDevice, takes_the_system_s_version_from_the_release_file_or_else_the_kernel) {
    const TemporaryFolder root;
    EXPECT_EQ(LinuxDevice(root.path().string()).systemVersion(), "");
    root.write("proc/sys/kernel/osrelease", "6.1.0-18-amd64\n");
    EXPECT_EQ(LinuxDevice(root.path().string()).systemVersion(), "6.1.0-18-amd64");
    root.write("usr/lib/os-release", "VERSION_ID=11");
    EXPECT_EQ(LinuxDevice(root.path().string()).systemVersion(), "11");
    root.write("etc/os-release", "NAME=\"X\"\nVERSION_ID_2=1\nVERSION=\"12 (x)\"\nVERSION_ID=\"12\"\nID=x\n");
    EXPECT_EQ(LinuxDevice(root.path().string()).systemVersion(), "12");
}

} // namespace
} // namespace teralune
