// SPDX-License-Identifier: MIT
// Memory, adapters, monitors and the management answers from made-up trees of a Linux kernel.
#include "edid_sample.h"
#include "fake_tree.h"

#include "sysinfo/management_answers.h"
#include "sysinfo/memory_blocks.h"
#include "sysinfo/os_text.h"

#include <gtest/gtest.h>

namespace
{

using namespace ky::impl;
using ky::kyVariant;
using ky::test::FakeTree;

const PciList noList = [] { return std::string(); };

/// A desktop with a graphics card that drives two monitors, and one in the processor.
FakeTree desktop()
{
    FakeTree fake;
    fake.files = {
        {"/etc/os-release", "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"},
        {"/proc/sys/kernel/osrelease", "6.1.0-18-amd64\n"},
        {"/proc/sys/kernel/version", "#1 SMP Debian 6.1.76-1\n"},
        {"/proc/sys/kernel/hostname", "box\n"},
        {"/proc/sys/kernel/domainname", "(none)\n"},
        {"/proc/meminfo", "MemTotal:       16000000 kB\n"},
        {"/proc/cpuinfo", "processor : 0\nmodel name : A Processor\ncpu MHz : 800.1\nphysical id : 0\n\n"},
        {"/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "4700000\n"},
        {"/sys/class/dmi/id/sys_vendor", "Dell Inc.\n"},
        {"/sys/class/dmi/id/product_name", "Precision 3660\n"},
        {"/sys/class/dmi/id/product_family", "Precision\n"},
        {"/sys/class/drm/version", "drm 1.1.0\n"},
        {"/sys/class/drm/card0/device/uevent", "DRIVER=i915\nPCI_CLASS=30000\nPCI_ID=8086:4680\n"},
        {"/sys/class/drm/card0-HDMI-A-1/status", "disconnected\n"},
        {"/sys/class/drm/card10/device/uevent", "DRIVER=amdgpu\nPCI_ID=1002:73BF\n"},
        {"/sys/class/drm/card10/device/mem_info_vram_total", "17163091968\n"},
        {"/sys/class/drm/card10/device/mem_info_gtt_total", "8192000000\n"},
        {"/sys/class/drm/card10-DP-1/status", "connected\n"},
        {"/sys/class/drm/card10-DP-1/edid", ky::test::edidBlock("DELL U2720Q\n")},
        {"/sys/class/drm/card10-DP-1/modes", "1920x1080\n"},
        {"/sys/class/drm/card10-DP-2/status", "connected\n"},
        {"/sys/class/drm/card10-DP-2/edid", "garbage"},
        {"/sys/class/drm/card10-DP-2/modes", "1280x1024\n1024x768\n"},
        {"/sys/class/drm/renderD128/device/uevent", "DRIVER=amdgpu\nPCI_ID=1002:73BF\n"},
        {"/sys/module/amdgpu/version", "6.3.6\n"},
    };
    return fake;
}

kyVariant::kyVariantMapImpl collect(const FakeTree& fake, const PciList& list = noList)
{
    kyVariant::kyVariantMapImpl map;
    const SystemTree tree = fake.tree();
    collectManagement([&](const ManagementQuery& query) { return answerFromTree(tree, list, query); }, true, map);
    return map;
}

TEST(MachineTree, ADesktopIsDescribed)
{
    const PciList list = [] { return std::string("1002  AMD\n\t73bf  Navi 21\n"); };
    const auto map = collect(desktop(), list);
    const struct
    {
        const char* path;
        kyVariant value;
    } rows[] = {
        {"operatingsystem/caption", "Debian GNU/Linux 12 (bookworm)"},
        {"operatingsystem/buildnumber", "#1 SMP Debian 6.1.76-1"},
        {"operatingsystem/version", "6.1.0-18-amd64"},
        {"operatingsystem/osarchitecture", "64-bit"},
        {"processor/1/name", "A Processor"},
        {"processor/1/maxclockspeed", 4700},
        {"videocontroller/1/caption", "Intel device 4680"},
        {"videocontroller/1/driverversion", "6.1.0-18-amd64"},
        {"videocontroller/1/currenthorizontalresolution", 0},
        {"videocontroller/2/caption", "AMD Navi 21"},
        {"videocontroller/2/driverversion", "6.3.6"},
        {"videocontroller/2/adapterram", 17163091968},
        {"videocontroller/2/currenthorizontalresolution", 3840},
        {"videocontroller/2/currentverticalresolution", 2160},
        {"desktopmonitor/1/name", "DELL U2720Q"},
        {"desktopmonitor/2/name", "DP-2"},
        {"desktopmonitor/2/screenwidth", 1280},
        {"desktopmonitor/2/screenheight", 1024},
        {"computersystem/manufacturer", "Dell Inc."},
        {"computersystem/model", "Precision 3660"},
        {"computersystem/systemfamily", "Precision"},
        {"computersystem/totalphysicalmemory", 16384000000},
        {"computersystem/domain", ""},
        {"computersystem/name", "box"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(map.getValuePath(row.path), row.value) << row.path << ": " << map.getValuePath(row.path);
    EXPECT_EQ(map.getValuePath("videocontroller").toMap().size(), 2u);
    EXPECT_EQ(map.getValuePath("desktopmonitor").toMap().size(), 2u);
}

TEST(MachineTree, AdaptersOfAllKindsHaveAName)
{
    const struct
    {
        std::map<std::string, std::string> files;
        std::string description;
    } rows[] = {
        {{{"/sys/class/drm/card0/device/uevent", "DRIVER=virtio_gpu\nMODALIAS=virtio:d00000010v00001AF4\n"},
          {"/sys/class/drm/card0/device/../uevent", "DRIVER=virtio-pci\nPCI_ID=1AF4:1050\n"}},
         "Virtio device 1050"},
        {{{"/sys/class/drm/card0/device/uevent", "DRIVER=vc4-drm\nOF_COMPATIBLE_0=brcm,bcm2711-vc5\n"}},
         "brcm,bcm2711-vc5"},
        {{{"/sys/class/drm/card0/device/uevent", "DRIVER=simple-framebuffer\n"}}, "simple-framebuffer display adapter"},
        {{{"/sys/class/drm/card0/device/uevent", "PCI_ID=zz:1\nDRIVER=\xff\n"}}, "Unknown display adapter"},
        {{{"/sys/class/drm/card0/device/uevent", "PCI_ID=10000:1\n"}}, "Unknown display adapter"},
        {{{"/sys/class/drm/card0/dev", "226:0"}}, "Unknown display adapter"},
        {{{"/sys/class/drm/card0/device/uevent", "DRIVER=../x\n"}, {"/sys/module/../x/version", "1"}},
         "../x display adapter"},
        // No graphics driver at all: the bus knows the device.
        {{{"/sys/bus/pci/devices/0000:00:01.0/class", "0x060000\n"},
          {"/sys/bus/pci/devices/0000:00:02.0/class", "0x030000\n"},
          {"/sys/bus/pci/devices/0000:00:02.0/uevent", "PCI_ID=1234:1111\n"},
          {"/sys/bus/pci/devices/0000:00:03.0/class", "garbage"}},
         "QEMU device 1111"},
    };
    for (const auto& row : rows)
    {
        const FakeTree fake{row.files, {}};
        const auto cards = findGraphicsCards(fake.tree(), noList);
        ASSERT_EQ(cards.size(), 1u) << row.description;
        EXPECT_EQ(cards[0].info.description, row.description);
        EXPECT_EQ(cards[0].info.dedicatedVideoMemory, 0u);
        const auto map = collect(fake);
        EXPECT_EQ(map.getValuePath("videocontroller/1/caption"), kyVariant(row.description));
        EXPECT_EQ(map.getValuePath("videocontroller/1/driverversion"), kyVariant("")) << "not from outside its folder";
    }
}

TEST(MachineTree, InstalledMemoryIsWhatTheBlocksHold)
{
    const auto installed = [](const char* managed, const char* blockSize, int blocks)
    {
        FakeTree fake;
        fake.files["/proc/meminfo"] = managed;
        fake.files["/sys/devices/system/memory/block_size_bytes"] = blockSize;
        fake.files["/sys/devices/system/memory/memory_x/state"] = "online";
        for (int i = 0; i < blocks; ++i)
            fake.files["/sys/devices/system/memory/memory" + std::to_string(i) + "/state"] = "online";
        return installedMemory(fake.tree());
    };
    const std::uint64_t gigabyte = std::uint64_t{1} << 30;
    const char* const managed = "MemTotal:   4000000 kB\n";
    EXPECT_EQ(installed(managed, "8000000\n", 32), 4 * gigabyte);
    EXPECT_EQ(installed("", "8000000\n", 32), 4 * gigabyte);
    const std::uint64_t told = std::uint64_t{4000000} * 1024;
    EXPECT_EQ(installed(managed, "8000000\n", 3), told) << "less than the kernel manages";
    EXPECT_EQ(installed(managed, "8000000\n", 4096), told) << "far more than the kernel manages";
    for (const char* const garbage : {"", "x", "0", "ffffffffffffffff", "-1"})
        EXPECT_EQ(installed(managed, garbage, 32), told) << garbage;
    EXPECT_EQ(installed("garbage", "garbage", 5), 0u);
}

TEST(MachineTree, NothingAndGarbageGiveDefaults)
{
    const FakeTree empty;
    FakeTree garbage = desktop();
    FakeTree huge = desktop();
    for (auto& [path, text] : garbage.files)
        text = std::string("\x00\xff\x1b[2J\x80\n:::==\n", 13) + path;
    for (auto& [path, text] : huge.files)
        text = std::string(1 << 20, '9');
    for (int i = 0; i < 5000; ++i)
        huge.files["/sys/class/drm/card" + std::to_string(i) + "/device/uevent"] = "DRIVER=x\n";
    for (const FakeTree* const fake : std::initializer_list<const FakeTree*>{&empty, &garbage, &huge})
    {
        const auto map = collect(*fake);
        EXPECT_EQ(map.getValuePath("operatingsystem/caption"), kyVariant(""));
        EXPECT_EQ(map.getValuePath("computersystem/totalphysicalmemory"), kyVariant(0));
        EXPECT_EQ(map.getValuePath("desktopmonitor").toMap().size(), 0u);
        EXPECT_LE(map.getValuePath("videocontroller").toMap().size(), 64u);
        EXPECT_EQ(installedMemory(fake->tree()), 0u);
    }
    EXPECT_EQ(collect(huge).getValuePath("videocontroller").toMap().size(), 64u);
    EXPECT_EQ(describeOs(linuxFacts(empty.tree())), "Linux Unknown distribution 64bit (v0.0.0, kernel unknown)");
}

} // namespace
