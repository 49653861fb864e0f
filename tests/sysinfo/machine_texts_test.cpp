// SPDX-License-Identifier: MIT
// What is read from the files of a Linux kernel, with made-up content.
#include "fake_tree.h"

#include "sysinfo/main_disk.h"
#include "sysinfo/power_supply.h"
#include "sysinfo/process_texts.h"
#include "sysinfo/processor_quota.h"

#include <gtest/gtest.h>

#include <sstream>

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

Files with(Files files, const Files& more)
{
    for (const auto& [path, text] : more)
        files[path] = text;
    return files;
}

constexpr char unifiedMount[] = "30 25 0:26 / /sys/fs/cgroup rw - cgroup2 cgroup2 rw,nsdelegate\n";
constexpr char olderMounts[] = "31 30 0:27 / /sys/fs/cgroup/memory rw - cgroup cgroup rw,memory\n"
                               "32 30 0:28 / /sys/fs/cgroup/cpu,cpuacct rw - cgroup cgroup rw,cpu,cpuacct\n";
constexpr char containerMount[] = "32 30 0:28 /docker/4f /sys/fs/cgroup/cpu ro - cgroup cgroup rw,cpu\n";

std::uint64_t quotaOf(const std::string& groups, const std::string& mounts, const Files& files)
{
    FakeTree fake{files, {}};
    fake.files["/proc/self/cgroup"] = groups;
    fake.files["/proc/self/mountinfo"] = mounts;
    return processorQuota(fake.tree());
}

TEST(ProcessorQuota, OfOneGroupIsRoundedUp)
{
    const struct
    {
        const char* text;
        std::uint64_t quota;
    } rows[] = {{"", 0},
                {"max 100000\n", 0},
                {"50000 100000\n", 1},
                {"200000 100000\n", 2},
                {"200001 100000\n", 3},
                {"400000\n", 4},
                {"0 0", 0},
                {"100 0", 0},
                {"\xff\xfe many", 0},
                {"9223372036854775807 1", 9223372036854775807U}};
    for (const auto& row : rows)
        EXPECT_EQ(quotaOf("0::/\n", unifiedMount, {{"/sys/fs/cgroup/cpu.max", row.text}}), row.quota) << row.text;
}

TEST(ProcessorQuota, IsTheSmallestOfAllGroups)
{
    const std::string unified = "/sys/fs/cgroup";
    const std::string older = "/sys/fs/cgroup/cpu,cpuacct";
    const auto first = [](const std::string& folder, const char* quota) {
        return Files{{folder + "/cpu.cfs_quota_us", quota}, {folder + "/cpu.cfs_period_us", "100000\n"}};
    };
    const Files above = {{unified + "/user.slice/cpu.max", "150000 50000\n"},
                         {unified + "/user.slice/a/b/cpu.max", "900000 100000\n"}};
    const Files both = with(first(older, "600000"), {{unified + "/cpu.max", "700000 100000"}});
    const struct
    {
        const char* what;
        const char* groups;
        std::string mounts;
        Files files;
        std::uint64_t quota;
    } rows[] = {
        {"no groups", "", "", {}, 0},
        {"group above", "0::/user.slice/a/b\n", unifiedMount, above, 3},
        {"group below does not count", "0::/a\n", unifiedMount, {{unified + "/a/b/cpu.max", "1 1\n"}}, 0},
        {"outside of the name space", "0::/../../x\n", unifiedMount, {{unified + "/cpu.max", "500000 100000"}}, 5},
        {"version 1", "9:memory:/m\n4:cpu,cpuacct:/u\n", olderMounts, first(older + "/u", "250000\n"), 3},
        {"version 1 without bound", "4:cpu,cpuacct:/\n", olderMounts, first(older, "-1\n"), 0},
        {"host's path in a container", "4:cpu:/docker/4f\n", containerMount, first("/sys/fs/cgroup/cpu", "100000\n"),
         1},
        {"similar name", "4:cpu:/docker/4f00\n", containerMount, first("/sys/fs/cgroup/cpu00", "100000\n"), 0},
        {"both versions", "4:cpu:/\n0::/\n", std::string(unifiedMount) + olderMounts, both, 6},
    };
    for (const auto& row : rows)
        EXPECT_EQ(quotaOf(row.groups, row.mounts, row.files), row.quota) << row.what;
}

TEST(MainDisk, IsFoundBelowPartitionsAndVolumes)
{
    const std::string pci = "/sys/devices/pci0000:00/0000:00:17.0/block/";
    const std::string virt = "/sys/devices/virtual/block/";
    const auto block = [](const char* number, const std::string& target) {
        return Files{{std::string("/sys/dev/block/") + number, target}};
    };
    const auto mount = [](const std::string& device, const char* typeAndSource)
    { return "1 0 " + device + " / / rw - " + typeAndSource + " rw\n"; };
    const Files partitions = {{pci + "sda/sda1/partition", "1\n"}, {pci + "sdb/sdb1/partition", "1"}};
    const Files array = {{virt + "dm-0/slaves/md127", virt + "md127"},
                         {virt + "md127/slaves/sda1", pci + "sda/sda1"},
                         {virt + "md127/slaves/sdb1", pci + "sdb/sdb1"}};
    const Files loop = {{virt + "dm-0/slaves/dm-1", virt + "dm-1"}, {virt + "dm-1/slaves/dm-0", virt + "dm-0"}};
    const Files twoDisks = with(block("8:1", pci + "sda/sda1"), block("8:17", pci + "sdb/sdb1"));
    const struct
    {
        const char* what;
        std::string mounts;
        Files links;
        const char* disk;
    } rows[] = {
        {"nothing known", "", {}, ""},
        {"container", mount("0:50", "overlay overlay"), {}, ""},
        {"network", mount("0:50", "nfs server:/export"), {}, ""},
        {"whole disk", mount("253:0", "ext4 /dev/root"), block("253:0", virt + "vda"), "/dev/vda"},
        {"partition", mount("8:1", "ext4 /dev/sda1"), twoDisks, "/dev/sda"},
        {"hidden by a later mount",
         mount("8:1", "ext4 /dev/sda1") + mount("8:17", "ext4 /dev/sdb1") + "3 2 8:33 / /x rw - ext4 /dev/sdc1 rw\n",
         twoDisks, "/dev/sdb"},
        {"encrypted volume on an array", mount("254:0", "ext4 /dev/mapper/root"),
         with(array, block("254:0", virt + "dm-0")), "/dev/sda"},
        {"file system with numbers of its own",
         mount("0:31", "btrfs /dev/mapper/root"),
         {{"/dev/mapper/root", "/dev/dm-3"}, {"/sys/class/block/dm-3", virt + "dm-3"}},
         "/dev/dm-3"},
        {"number that is not listed",
         mount("8:99", "ext4 /dev/sda1"),
         {{"/sys/class/block/sda1", pci + "sda/sda1"}},
         "/dev/sda"},
        {"name with a separator", mount("104:1", "ext4 /dev/root"), block("104:1", virt + "cciss!c0d0"),
         "/dev/cciss/c0d0"},
        {"loop of layers", mount("254:0", "ext4 x"), with(loop, block("254:0", virt + "dm-0")), "/dev/dm-0"},
    };
    for (const auto& row : rows)
    {
        FakeTree fake{with(partitions, {{"/proc/self/mountinfo", row.mounts}}), row.links};
        EXPECT_EQ(diskOfRoot(fake.tree()), row.disk) << row.what;
    }
}

TEST(PowerSupply, AddsUpWhatTheSuppliesTell)
{
    // "supply/file=content", the last one of a file counts.
    const std::string battery = "BAT0/type=Battery,BAT0/status=Discharging,BAT0/capacity=41";
    const struct
    {
        const char* what;
        std::string files;
        const char* told;
    } rows[] = {
        {"none", "", "unknown -1"},
        {"desktop with an adapter", "AC/type=Mains,AC/online=1", "mains -1"},
        {"discharging", battery, "battery 41 present"},
        {"unplugged", battery + ",BAT0/status=Unknown,AC/type=Mains,AC/online=0", "battery 41 present"},
        {"weak charger", battery + ",AC/type=USB,AC/online=1", "mains 41 present"},
        {"charging", battery + ",BAT0/status=Charging", "mains 41 present charging"},
        {"not charging", battery + ",BAT0/status=Not charging", "mains 41 present"},
        {"full", battery + ",BAT0/status=Full,BAT0/capacity=104", "mains 100 present"},
        {"mouse", "hid/type=Battery,hid/scope=Device,hid/capacity=12", "unknown -1"},
        {"empty bay", battery + ",BAT0/present=0", "unknown -1"},
        {"a large and a small one",
         battery + ",BAT0/energy_now=9000000,BAT0/energy_full=10000000,BAT1/type=Battery,BAT1/energy_now=0,"
                   "BAT1/energy_full=80000000",
         "battery 10 present"},
        {"a second one in per cent only", battery + ",BAT1/type=Battery,BAT1/capacity=60", "battery 51 present"},
        {"charge only", "B/type=Battery,B/charge_now=2400,B/charge_full=3200,B/energy_full=7", "unknown 75 present"},
        {"garbage",
         "B/type=Battery,B/capacity=-5,B/charge_now=9,B/charge_full=0,E/type=UPS,E/energy_now=1,E/"
         "energy_full=1000000000000001,C/type=\xff,C/online=x,D/online=1",
         "unknown -1 present"},
    };
    for (const auto& row : rows)
    {
        FakeTree fake;
        std::istringstream words(row.files);
        for (std::string word; std::getline(words, word, ',');)
            fake.files["/sys/class/power_supply/" + word.substr(0, word.find('='))] =
                word.substr(word.find('=') + 1) + "\n";
        const PowerStatus status = powerFromSupplies(fake.tree());
        EXPECT_EQ(status.toVariantMap()["source"].toString() + " " + std::to_string(status.batteryPercent) +
                      (status.hasBattery ? " present" : "") + (status.isCharging ? " charging" : ""),
                  row.told)
            << row.what;
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
