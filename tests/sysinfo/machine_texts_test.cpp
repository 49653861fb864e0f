// SPDX-License-Identifier: MIT
// What is read from the files of a Linux kernel, with made-up content.
#include "fake_tree.h"

#include "sysinfo/main_disk.h"
#include "sysinfo/power_supply.h"
#include "sysinfo/process_texts.h"
#include "sysinfo/processor_quota.h"

#include <gtest/gtest.h>

namespace
{

using namespace ky::impl;
using ky::test::FakeTree;
using PowerStatus = ky::kySystemUtils::PowerStatus;
using Files = std::map<std::string, std::string>;

TEST(SystemTree, TakesMountsApart)
{
    const FakeTree fake{{{"/proc/self/mountinfo",
                          "22 27 0:21 / /proc rw,relatime shared:5 - proc proc rw\n"
                          "40 27 8:2 /a\\040b /mnt/x\\134y\\011 rw shared:1 master:2 - ext4 /dev/sda2 rw,data=ordered\n"
                          "garbage\n"
                          " - \n"
                          "1 2 3:4 / relative rw - ext4 /dev/sda2 rw\n"
                          "50 1 0:9 / /\\0x1\\0_0\\/00\\08\\end\\7 rw - tmpfs tmpfs"}},
                        {}};
    const std::vector<Mount> mounts = readMounts(fake.tree());
    ASSERT_EQ(mounts.size(), 3u);
    EXPECT_EQ(mounts[0].type, "proc");
    EXPECT_EQ(mounts[1].device, "8:2");
    EXPECT_EQ(mounts[1].root, "/a b");
    EXPECT_EQ(mounts[1].point, "/mnt/x\\y\t");
    EXPECT_EQ(mounts[1].source, "/dev/sda2");
    EXPECT_EQ(mounts[1].options, "rw,data=ordered");
    EXPECT_EQ(mounts[2].point, "/\\0x1\\0_0\\/00\\08\\end\\7") << "no octal numbers of three digits";
    EXPECT_EQ(mounts[2].options, "");
}

TEST(SystemTree, ReadsNumbersWhole)
{
    const struct
    {
        const char* text;
        std::int64_t number;
    } rows[] = {
        {" 42\n", 42}, {"007", 7}, {"12 kB", 12}, {"", -1}, {"-1\n", -1}, {"max", -1}, {"99999999999999999999", -1}};
    for (const auto& row : rows)
        EXPECT_EQ(leadingNumber(row.text), row.number) << row.text;
}

constexpr char unifiedMount[] = "30 25 0:26 / /sys/fs/cgroup rw - cgroup2 cgroup2 rw,nsdelegate\n";
constexpr char olderMounts[] = "31 30 0:27 / /sys/fs/cgroup/memory rw - cgroup cgroup rw,memory\n"
                               "32 30 0:28 / /sys/fs/cgroup/cpu,cpuacct rw - cgroup cgroup rw,cpu,cpuacct\n";
constexpr char containerMount[] = "32 30 0:28 /docker/4f /sys/fs/cgroup/cpu ro - cgroup cgroup rw,cpu\n";

struct QuotaRow
{
    const char* what;
    const char* groups;
    std::string mounts;
    Files files;
    std::uint64_t quota;
};

TEST(ProcessorQuota, IsTheSmallestOfAllGroupsRoundedUp)
{
    const std::string unified = "/sys/fs/cgroup";
    const std::string older = "/sys/fs/cgroup/cpu,cpuacct";
    const QuotaRow rows[] = {
        {"no groups", "", "", {}, 0},
        {"no bound", "0::/\n", unifiedMount, {{unified + "/cpu.max", "max 100000\n"}}, 0},
        {"half", "0::/\n", unifiedMount, {{unified + "/cpu.max", "50000 100000\n"}}, 1},
        {"two", "0::/\n", unifiedMount, {{unified + "/cpu.max", "200000 100000\n"}}, 2},
        {"two and a bit", "0::/\n", unifiedMount, {{unified + "/cpu.max", "200001 100000\n"}}, 3},
        {"usual period", "0::/\n", unifiedMount, {{unified + "/cpu.max", "400000\n"}}, 4},
        {"group above",
         "0::/user.slice/a/b\n",
         unifiedMount,
         {{unified + "/user.slice/cpu.max", "150000 50000\n"},
          {unified + "/user.slice/a/b/cpu.max", "900000 100000\n"}},
         3},
        {"group below does not count", "0::/a\n", unifiedMount, {{unified + "/a/b/cpu.max", "1 1\n"}}, 0},
        {"outside of the name space", "0::/../../x\n", unifiedMount, {{unified + "/cpu.max", "500000 100000"}}, 5},
        {"version 1",
         "9:memory:/m\n4:cpu,cpuacct:/u\n",
         olderMounts,
         {{older + "/u/cpu.cfs_quota_us", "250000\n"}, {older + "/u/cpu.cfs_period_us", "100000\n"}},
         3},
        {"version 1 without bound",
         "4:cpu,cpuacct:/\n",
         olderMounts,
         {{older + "/cpu.cfs_quota_us", "-1\n"}, {older + "/cpu.cfs_period_us", "100000\n"}},
         0},
        {"version 1 in a container that sees its host's path",
         "4:cpu:/docker/4f\n",
         containerMount,
         {{"/sys/fs/cgroup/cpu/cpu.cfs_quota_us", "100000\n"}, {"/sys/fs/cgroup/cpu/cpu.cfs_period_us", "100000\n"}},
         1},
        {"similar name is another group",
         "4:cpu:/docker/4f00\n",
         containerMount,
         {{"/sys/fs/cgroup/cpu00/cpu.cfs_quota_us", "100000\n"},
          {"/sys/fs/cgroup/cpu00/cpu.cfs_period_us", "100000\n"}},
         0},
        {"both versions",
         "4:cpu:/\n0::/\n",
         std::string(unifiedMount) + olderMounts,
         {{unified + "/cpu.max", "700000 100000"},
          {older + "/cpu.cfs_quota_us", "600000"},
          {older + "/cpu.cfs_period_us", "100000"}},
         6},
        {"huge", "0::/\n", unifiedMount, {{unified + "/cpu.max", "9223372036854775807 1"}}, 9223372036854775807U},
        {"nonsense", "0::/\n", unifiedMount, {{unified + "/cpu.max", "0 0"}}, 0},
        {"period 0", "0::/\n", unifiedMount, {{unified + "/cpu.max", "100 0"}}, 0},
        {"no number", "0::/\n", unifiedMount, {{unified + "/cpu.max", "\xff\xfe many"}}, 0},
    };
    for (const auto& row : rows)
    {
        FakeTree fake{row.files, {}};
        fake.files["/proc/self/cgroup"] = row.groups;
        fake.files["/proc/self/mountinfo"] = row.mounts;
        EXPECT_EQ(processorQuota(fake.tree()), row.quota) << row.what;
    }
}

struct DiskRow
{
    const char* what;
    std::string root;
    Files files;
    Files links;
    const char* disk;
};

TEST(MainDisk, IsFoundBelowPartitionsAndVolumes)
{
    const std::string pci = "/sys/devices/pci0000:00/0000:00:17.0/block/";
    const std::string virt = "/sys/devices/virtual/block/";
    const DiskRow rows[] = {
        {"nothing known", "", {}, {}, ""},
        {"container", "1 0 0:50 / / rw - overlay overlay rw\n", {}, {}, ""},
        {"network", "1 0 0:50 / / rw - nfs server:/export rw\n", {}, {}, ""},
        {"whole disk",
         "1 0 253:0 / / rw - ext4 /dev/root rw\n",
         {},
         {{"/sys/dev/block/253:0", virt + "vda"}},
         "/dev/vda"},
        {"partition",
         "1 0 259:2 / / rw - ext4 /dev/nvme0n1p2 rw\n",
         {{pci + "nvme0n1/nvme0n1p2/partition", "2\n"}},
         {{"/sys/dev/block/259:2", pci + "nvme0n1/nvme0n1p2"}},
         "/dev/nvme0n1"},
        {"hidden by a later mount",
         "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n2 1 8:17 / / rw - ext4 /dev/sdb1 rw\n3 2 8:33 / /x rw - ext4 /dev/sdc1 "
         "rw\n",
         {{pci + "sda/sda1/partition", "1"}, {pci + "sdb/sdb1/partition", "1"}},
         {{"/sys/dev/block/8:1", pci + "sda/sda1"}, {"/sys/dev/block/8:17", pci + "sdb/sdb1"}},
         "/dev/sdb"},
        {"encrypted volume on an array",
         "1 0 254:0 / / rw - ext4 /dev/mapper/root rw\n",
         {{pci + "sda/sda3/partition", "3"}, {pci + "sdb/sdb3/partition", "3"}},
         {{"/sys/dev/block/254:0", virt + "dm-0"},
          {virt + "dm-0/slaves/md127", virt + "md127"},
          {virt + "md127/slaves/sda3", pci + "sda/sda3"},
          {virt + "md127/slaves/sdb3", pci + "sdb/sdb3"}},
         "/dev/sda"},
        {"file system with numbers of its own",
         "1 0 0:31 /@ / rw - btrfs /dev/mapper/root rw,subvol=/@\n",
         {},
         {{"/dev/mapper/root", "/dev/dm-3"}, {"/sys/class/block/dm-3", virt + "dm-3"}},
         "/dev/dm-3"},
        {"name with a separator",
         "1 0 104:1 / / rw - ext4 /dev/root rw\n",
         {},
         {{"/sys/dev/block/104:1", virt + "cciss!c0d0"}},
         "/dev/cciss/c0d0"},
        {"loop of layers",
         "1 0 254:0 / / rw - ext4 x rw\n",
         {},
         {{"/sys/dev/block/254:0", virt + "dm-0"},
          {virt + "dm-0/slaves/dm-1", virt + "dm-1"},
          {virt + "dm-1/slaves/dm-0", virt + "dm-0"}},
         "/dev/dm-0"},
    };
    for (const auto& row : rows)
    {
        FakeTree fake{row.files, row.links};
        fake.files["/proc/self/mountinfo"] = row.root;
        EXPECT_EQ(diskOfRoot(fake.tree()), row.disk) << row.what;
    }
}

Files with(Files files, const Files& more)
{
    for (const auto& entry : more)
        files[entry.first] = entry.second;
    return files;
}

struct PowerRow
{
    const char* what;
    Files files;
    PowerStatus::Source source;
    bool hasBattery;
    bool isCharging;
    int percent;
};

TEST(PowerSupply, AddsUpWhatTheSuppliesTell)
{
    using Source = PowerStatus::Source;
    const Files battery = {{"BAT0/type", "Battery\n"}, {"BAT0/status", "Discharging\n"}, {"BAT0/capacity", "41\n"}};
    const PowerRow rows[] = {
        {"none", {}, Source::Unknown, false, false, -1},
        {"desktop with an adapter", {{"AC/type", "Mains"}, {"AC/online", "1"}}, Source::Mains, false, false, -1},
        {"discharging", battery, Source::Battery, true, false, 41},
        {"unplugged", with(battery, {{"BAT0/status", "Unknown"}, {"AC/type", "Mains"}, {"AC/online", "0"}}),
         Source::Battery, true, false, 41},
        {"weak charger", with(battery, {{"AC/type", "USB"}, {"AC/online", "1"}}), Source::Mains, true, false, 41},
        {"charging", with(battery, {{"BAT0/status", "Charging"}}), Source::Mains, true, true, 41},
        {"full", with(battery, {{"BAT0/status", "Full"}, {"BAT0/capacity", "104"}}), Source::Mains, true, false, 100},
        {"mouse",
         {{"hid/type", "Battery"}, {"hid/scope", "Device\n"}, {"hid/capacity", "12"}},
         Source::Unknown,
         false,
         false,
         -1},
        {"empty bay", with(battery, {{"BAT0/present", "0\n"}}), Source::Unknown, false, false, -1},
        {"a large and a small one",
         with(battery, {{"BAT0/energy_now", "9000000"},
                        {"BAT0/energy_full", "10000000"},
                        {"BAT1/type", "Battery"},
                        {"BAT1/energy_now", "0"},
                        {"BAT1/energy_full", "80000000"}}),
         Source::Battery, true, false, 10},
        {"a second one in per cent only", with(battery, {{"BAT1/type", "Battery"}, {"BAT1/capacity", "60"}}),
         Source::Battery, true, false, 51},
        {"charge only",
         {{"B/type", "Battery"}, {"B/charge_now", "2400"}, {"B/charge_full", "3200"}, {"B/energy_full", "7"}},
         Source::Unknown,
         true,
         false,
         75},
        {"garbage",
         {{"B/type", "Battery"},
          {"B/capacity", "-5"},
          {"B/charge_now", "9"},
          {"B/charge_full", "0"},
          {"C/type", "\xff"},
          {"C/online", "x"},
          {"D/online", "1"}},
         Source::Unknown,
         true,
         false,
         -1},
    };
    for (const auto& row : rows)
    {
        FakeTree fake;
        for (const auto& entry : row.files)
            fake.files["/sys/class/power_supply/" + entry.first] = entry.second;
        const PowerStatus status = powerFromSupplies(fake.tree());
        EXPECT_EQ(status.source, row.source) << row.what;
        EXPECT_EQ(status.hasBattery, row.hasBattery) << row.what;
        EXPECT_EQ(status.isCharging, row.isCharging) << row.what;
        EXPECT_EQ(status.batteryPercent, row.percent) << row.what;
    }
}

TEST(ProcessTexts, GiveMemoryArgumentsAndProgram)
{
    EXPECT_EQ(privateMemoryOf("Name:\tRssAnon\nVmRSS:\t  9000 kB\nRssAnon:\t  2000 kB\nVmSwap:\t 48 kB\n"),
              2048 * 1024);
    EXPECT_EQ(privateMemoryOf("VmRSS:\t  9000 kB\n"), 9000 * 1024) << "an old kernel";
    EXPECT_EQ(privateMemoryOf("RssAnon:\t9223372036854775807 kB\nVmSwap:\tx"), 0);
    EXPECT_EQ(privateMemoryOf(""), 0);

    using Texts = std::vector<std::string>;
    EXPECT_EQ(argumentsOf(std::string("a\0\0b c\0", 7)), (Texts{"a", "", "b c"}));
    EXPECT_EQ(argumentsOf(std::string("title without end")), Texts{"title without end"});
    EXPECT_EQ(argumentsOf(""), Texts());

    EXPECT_EQ(programOf("/opt/a", true), "/opt/a");
    EXPECT_EQ(programOf("/opt/a (deleted)", false), "/opt/a");
    EXPECT_EQ(programOf("/opt/a (deleted)", true), "/opt/a (deleted)") << "a file of that name";
    EXPECT_EQ(programOf("(unreachable)/opt/a", false), "");
    EXPECT_EQ(programOf("", false), "");
}

} // namespace
