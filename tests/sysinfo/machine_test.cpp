// SPDX-License-Identifier: MIT
#include "environment.h"
#include "support/child_process.h"
#include "support/temp_dir.h"

#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace
{

using ky::kySystemUtils;

TEST(Program, KnowsWhereItLies)
{
    const std::string path = kySystemUtils::GetProgramFullPath();
    const std::string name = kySystemUtils::GetProgramName();
    const std::string folder = kySystemUtils::GetProgramFolder();
    EXPECT_EQ(name.compare(0, 20, "sysinfo_machine_test"), 0) << name;
    EXPECT_TRUE(ky::test::exists(path)) << path;
    ASSERT_EQ(path.size(), folder.size() + 1 + name.size()) << path << " " << folder;
    EXPECT_EQ(path.substr(0, folder.size()), folder);
    EXPECT_EQ(path.substr(folder.size() + 1), name);
    EXPECT_TRUE(ky::test::exists(folder + "/" + name));
}

TEST(Program, GetsItsArgumentsInUtf8)
{
    const ky::test::TempDir folder;
    const std::string output = folder.file("out");
    const std::vector<std::string> arguments = {
        "plain", "with blank", "", "a\"b", "back\\slash\\", "\\\"", "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", "*.cpp"};
    ky::test::ChildProcess child("print-command-line", arguments, output);
    ASSERT_EQ(child.wait(), 0);
    std::string expected = "print-command-line|";
    for (const std::string& argument : arguments)
        expected += argument + "|";
    const std::string printed = ky::test::readFile(output);
    const std::size_t first = printed.find('|');
    ASSERT_NE(first, std::string::npos);
    EXPECT_NE(printed.substr(0, first).find("ky_child"), std::string::npos) << printed;
    EXPECT_EQ(printed.substr(first + 1), expected);
}

TEST(Machine, NamesItsUserAndItself)
{
    const std::string user = kySystemUtils::GetCurrentUserNameUtf8();
    const std::string computer = kySystemUtils::GetLocalComputerName();
    EXPECT_FALSE(user.empty());
    EXPECT_FALSE(computer.empty());
    EXPECT_EQ(computer.find('.'), std::string::npos);
    for (const char c : user + computer)
        EXPECT_NE(c, '\0');
}

TEST(Machine, CountsThePrivateMemoryOfTheProcess)
{
    const long long before = kySystemUtils::GetUsedRamQuantityInBytes();
    ASSERT_GT(before, 0);
    constexpr std::size_t size = 64 << 20;
    const auto block = std::make_unique<volatile char[]>(size);
    for (std::size_t i = 0; i < size; i += 1024)
        block[i] = 1;
    const long long grown = kySystemUtils::GetUsedRamQuantityInBytes() - before;
    EXPECT_GT(grown, 56 << 20);
    EXPECT_LT(grown, 1 << 30) << "thread sanitizer keeps a multiple of it besides";
}

TEST(Machine, LooksUpTheMainDiskOnce)
{
    const std::string& disk = ky::getMainHDDDevice();
    const bool named = disk.compare(0, 5, "/dev/") == 0 || disk.compare(0, 17, "\\\\.\\PhysicalDrive") == 0;
    EXPECT_TRUE(disk.empty() || named) << disk;
    EXPECT_EQ(&disk, &ky::getMainHDDDevice());
}

TEST(Machine, TellsItsPowerInRange)
{
    const kySystemUtils::PowerStatus status = kySystemUtils::GetPowerStatus();
    EXPECT_GE(status.batteryPercent, -1);
    EXPECT_LE(status.batteryPercent, 100);
    EXPECT_TRUE(status.hasBattery || status.batteryPercent == -1);
    kySystemUtils::PowerStatus made;
    EXPECT_EQ(made.toVariantMap()["source"].getString(), "unknown");
    made.source = kySystemUtils::PowerStatus::Source::Battery;
    made.hasBattery = true;
    made.isCharging = true;
    made.batteryPercent = 40;
    EXPECT_EQ(made.toVariantMap().toString(),
              "(batterypercent=40),(hasbattery=true),(ischarging=true),(source=battery)");
    made.source = kySystemUtils::PowerStatus::Source::Mains;
    EXPECT_EQ(made.toVariantMap()["source"].getString(), "mains");
}

TEST(ProcessorCount, IsExportedWhereNobodyDid)
{
    const char* const name = "NUMBER_OF_PROCESSORS";
    const std::string original = ky::test::environmentText(name);
    ky::test::removeEnvironmentText(name);
    EXPECT_TRUE(kySystemUtils::ExportProcessorCount());
    const std::string exported = ky::test::environmentText(name);
    ASSERT_EQ(exported.find_first_not_of("0123456789"), std::string::npos) << exported;
    ASSERT_GE(std::stoul(exported), 1u);
    EXPECT_LE(std::stoul(exported), ky::test::processorsForThisProcess()) << "a quota may be smaller";
    EXPECT_EQ(std::to_string(std::stoul(exported)), exported);

    for (const char* const set : {"0", "-3", "abc", " "})
    {
        ky::test::setEnvironmentText(name, set);
        EXPECT_FALSE(kySystemUtils::ExportProcessorCount());
        EXPECT_EQ(ky::test::environmentText(name), set);
    }
    ky::test::setEnvironmentText(name, "");
    EXPECT_TRUE(kySystemUtils::ExportProcessorCount());
    EXPECT_EQ(ky::test::environmentText(name), exported);
    if (original.empty())
        ky::test::removeEnvironmentText(name);
    else
        ky::test::setEnvironmentText(name, original.c_str());
}

} // namespace
