// SPDX-License-Identifier: MIT
#include "environment.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyIniFile.h>
#include <ky/kyLog.h>
#include <ky/kySystem.h>
#include <ky/kySystemUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using ky::kyLog;
using ky::kySystemUtils;
using ky::kyVariant;
using Map = kyVariant::kyVariantMapImpl;

constexpr char variable[] = "NUMBER_OF_PROCESSORS";
const std::string missing = "Failed to retrieve NUMBER_OF_PROCESSORS";

void collect(const std::string& message, ky::kyLogType, const std::string&, void* messages)
{
    static_cast<std::vector<std::string>*>(messages)->push_back(message);
}

/// The record alone, with a logger that keeps its messages; the variable as it was afterwards.
class SystemRecord : public testing::Test
{
protected:
    SystemRecord()
    {
        kyLog::createInstance(false);
        kyLog::edit().setEchoToConsole(false);
        kyLog::edit().installCustomHandler(&collect, &messages);
    }
    ~SystemRecord() override
    {
        kySystemUtils::TerminateSystemUtils();
        kyLog::destroyInstance();
        ky::test::setEnvironmentText(variable, before.c_str());
        if (before.empty())
            ky::test::removeEnvironmentText(variable);
    }

    std::vector<std::string> messages;

private:
    const std::string before = ky::test::environmentText(variable);
};

TEST_F(SystemRecord, ProcessorCountIsWhatTheVariableSays)
{
    const struct
    {
        std::string text;
        int count;
        bool warns;
    } rows[] = {
        {"0", 1, false},
        {"-3", 1, false},
        {"1", 1, false},
        {"2", 2, false},
        {"1024", 1024, false},
        {"abc", 1, false},
        {"8abc", 8, false},
        {"  16", 16, false},
        {"\t\n 16", 16, false},
        {"+4", 4, false},
        {"- 4", 1, false},
        {"0x10", 1, false},
        {"2147483647", 2147483647, false},
        {"99999999999999999999", 2147483647, false},
        {"-99999999999999999999", 1, false},
        {std::string(4094, '0') + "7", 7, false}, // 4095 characters still fit
        {std::string(4095, '0') + "7", 1, true},
        {std::string(4096, '0') + "7", 1, true},
        {std::string(20000, '9'), 1, true},
    };
    for (const auto& row : rows)
    {
        ky::test::setEnvironmentText(variable, row.text.c_str());
        messages.clear();
        kySystemUtils::InitializeSystemUtils();
        EXPECT_EQ(kySystemUtils::GetIdealThreadCount(), row.count) << row.text.substr(0, 30);
        EXPECT_EQ(testing::Matches(testing::Contains(missing))(messages), row.warns) << row.text.substr(0, 30);
        kySystemUtils::TerminateSystemUtils();
    }
    ky::test::removeEnvironmentText(variable);
    kySystemUtils::InitializeSystemUtils();
    EXPECT_EQ(kySystemUtils::GetIdealThreadCount(), 1);
    EXPECT_THAT(messages, testing::Contains(missing));
}

TEST_F(SystemRecord, HoldsTheMachine)
{
    kySystemUtils::InitializeSystemUtils();
    EXPECT_THAT(kySystemUtils::GetOSInfo(),
                testing::AnyOf(testing::StartsWith("Windows "), testing::StartsWith("Linux ")));
    EXPECT_THAT(kySystemUtils::GetOSInfo(), testing::HasSubstr(" 64bit (v"));
    const long long memory = kySystemUtils::GetRamQuantityInBytes();
    EXPECT_TRUE(memory == -1 || memory >= 64 << 20) << memory;
    EXPECT_FALSE(kySystemUtils::GetCPUInfo().getVendor().empty());
    for (const auto& adapter : kySystemUtils::GetDirectXDevices())
        EXPECT_EQ(adapter.toVariantMap().getValue("description"), kyVariant(adapter.description));
    // A second call while the record is there keeps it.
    const std::string* const description = &kySystemUtils::GetOSInfo();
    kySystemUtils::InitializeSystemUtils();
    EXPECT_EQ(&kySystemUtils::GetOSInfo(), description);
}

TEST_F(SystemRecord, OutsideOfTheLibraryNothingIsKnown)
{
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(kySystemUtils::GetOSInfo(), "Unknown OS");
        EXPECT_EQ(kySystemUtils::GetRamQuantityInBytes(), -1);
        EXPECT_EQ(kySystemUtils::GetIdealThreadCount(), 1);
        EXPECT_TRUE(kySystemUtils::GetDirectXDevices().empty());
        EXPECT_TRUE(kySystemUtils::GetCPUInfo().getVendor().empty());
        EXPECT_TRUE(kySystemUtils::GetWmicInfo(true).empty());
        EXPECT_TRUE(kySystemUtils::GetThirdPartyLibVersionInfo().empty());
        kySystemUtils::InitializeSystemUtils();
        ky::impl::RegisterThirdPartyLibVersionInfo("zlib", "1.3");
        EXPECT_FALSE(kySystemUtils::GetWmicInfo(true).empty());
        kySystemUtils::TerminateSystemUtils();
    }
}

TEST_F(SystemRecord, ManyInitializationsWork)
{
    const int rounds = ky::test::isSoak() ? 1000 : 200;
    int failed = 0;
    for (int i = 0; i < rounds; ++i)
    {
        kySystemUtils::InitializeSystemUtils();
        failed += kySystemUtils::GetIdealThreadCount() < 1;
        kySystemUtils::TerminateSystemUtils();
    }
    ky::test::account("system information", {rounds, "initializations"}, {}, {failed, "empty records"});
}

std::vector<std::string> keysOf(const Map& map)
{
    std::vector<std::string> keys;
    for (const auto& entry : map)
        keys.push_back(entry.first);
    return keys;
}

std::vector<std::string> keysAt(const Map& map, const char* path) { return keysOf(map.getValuePath(path).toMap()); }

TEST_F(SystemRecord, ManagementMapsHaveTheSameKeysEverywhere)
{
    using testing::ElementsAre;
    kySystemUtils::InitializeSystemUtils();
    const Map& basic = kySystemUtils::GetWmicInfo(false);
    const Map& full = kySystemUtils::GetWmicInfo(true);
    EXPECT_NE(&basic, &full);
    for (const Map* const map : {&basic, &full})
    {
        EXPECT_THAT(keysOf(*map),
                    ElementsAre("computersystem", "desktopmonitor", "operatingsystem", "processor", "videocontroller"));
        EXPECT_THAT(keysAt(*map, "operatingsystem"),
                    ElementsAre("buildnumber", "caption", "osarchitecture", "version"));
        EXPECT_THAT(keysAt(*map, "processor/1"), ElementsAre("caption", "maxclockspeed", "name"));
        EXPECT_FALSE(map->getValuePath("operatingsystem/caption").toString().empty());
        EXPECT_GT(map->getValuePath("computersystem/totalphysicalmemory").toInteger(), 0);
    }
    EXPECT_THAT(keysAt(basic, "computersystem"),
                ElementsAre("manufacturer", "model", "systemfamily", "totalphysicalmemory"));
    EXPECT_THAT(keysAt(full, "computersystem"), ElementsAre("domain", "manufacturer", "model", "name", "systemfamily",
                                                            "totalphysicalmemory", "username"));
    EXPECT_EQ(&kySystemUtils::GetWmicInfo(false), &basic);
}

TEST_F(SystemRecord, TheReportFitsAnIniFile)
{
    using testing::ElementsAre;
    kySystemUtils::InitializeSystemUtils();
    ky::impl::RegisterThirdPartyLibVersionInfo("zlib", "v1.3");
    Map report{{"old", 1}};
    kySystemUtils::GenerateHardwareReport(report, false);
    EXPECT_THAT(keysOf(report), ElementsAre("adapters", "management", "memory", "os", "power", "processor"));
    kySystemUtils::GenerateHardwareReport(report, true);
    EXPECT_THAT(keysOf(report), ElementsAre("adapters", "computer", "disk", "libraries", "management", "memory", "os",
                                            "power", "processor", "program", "user"));
    EXPECT_EQ(report.getValuePath("libraries/zlib"), kyVariant("v1.3"));
    EXPECT_EQ(report.getValuePath("os/description"), kyVariant(kySystemUtils::GetOSInfo()));
    EXPECT_EQ(report.getValuePath("memory/installed"), kyVariant(kySystemUtils::GetRamQuantityInBytes()));
    EXPECT_EQ(report.getValuePath("program/processid"), kyVariant(kySystemUtils::GetCurrentProcessID()));

    const ky::test::TempDir dir;
    messages.clear();
    EXPECT_TRUE(ky::SaveIniFile(dir.file("report.ini"), report));
    EXPECT_THAT(messages, testing::IsEmpty());
    Map loaded;
    EXPECT_TRUE(ky::LoadIniFile(dir.file("report.ini"), loaded));
    EXPECT_EQ(loaded.getValuePath("os/description"), report.getValuePath("os/description"));
}

} // namespace
