// SPDX-License-Identifier: MIT
// Texts and bytes from firmware, drivers and distributions, true ones and garbage.
#include "edid_sample.h"

#include "sysinfo/edid.h"
#include "sysinfo/management.h"
#include "sysinfo/os_text.h"
#include "sysinfo/system_text.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace
{

using namespace ky::impl;
using ky::test::edidBlock;
using ky::test::sealed;

TEST(SystemText, OnlyCleanLinesPass)
{
    const std::string e = "\xc3\xa9";
    const struct
    {
        std::string text, line;
    } rows[] = {
        {"", ""},
        {" \t\r\n", ""},
        {"  Model 5 \nsecond", "Model 5"},
        {"\nsecond", ""},
        {"caf" + e, "caf" + e},
        {"caf\xc3", ""},
        {"\xff\xfe", ""},
        {std::string("a\0b", 3), ""},
        {"\x1b[31mred", ""},
        {"a\x7f", ""},
        {std::string(1000, 'x'), std::string(256, 'x')},
        {std::string(255, 'x') + e, std::string(255, 'x')},
        {std::string(100, 'x') + "\xff" + std::string(1000, 'x'), ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(cleanLine(row.text), row.line) << testing::PrintToString(row.text);
}

TEST(SystemText, NumbersAreWholeOrNothing)
{
    EXPECT_EQ(parseNumber(" 42\n", 10), 42u);
    EXPECT_EQ(parseNumber("0x30000", 16), 0x30000u);
    EXPECT_EQ(parseNumber("0XfF", 16), 0xFFu);
    for (const char* const text : {"0x", "x1", "0y1", "0x0x1", "0x-1", "12g"})
        EXPECT_FALSE(parseNumber(text, 16)) << text;
    EXPECT_EQ(parseNumber("8000000", 16), 0x8000000u);
    EXPECT_EQ(parseNumber("18446744073709551615", 10), 18446744073709551615u);
    for (const char* const text : {"", "-1", "+1", "1.5", "12 kB", "0x", "18446744073709551616", "abc"})
        EXPECT_FALSE(parseNumber(text, 10)) << text;
    EXPECT_EQ(memoryInfoBytes("SwapTotal: 7 kB\nMemTotal:       24684092 kB\n", "MemTotal"),
              std::uint64_t{24684092} * 1024);
    for (const char* const text : {"", "MemTotal:", "MemTotal: kB", "MemTotal: 5", "MemTotal: x kB", "MemTotal: -5 kB",
                                   "XMemTotal: 5 kB", "MemTotal: 18446744073709551615 kB"})
        EXPECT_FALSE(memoryInfoBytes(text, "MemTotal")) << text;
    const ScreenSize screen = parseScreenSize("1920x1080i\n1280x720\n");
    EXPECT_EQ(screen.width, 1920u);
    EXPECT_EQ(screen.height, 1080u);
    for (const char* const text : {"", "x", "1920x", "x1080", "1920", "0x1080", "1920x0", "99999x1", "1x65536", "-5x5"})
        EXPECT_EQ(parseScreenSize(text).width, 0u) << text;
}

TEST(SystemText, ProcessorPackages)
{
    std::string many;
    for (int i = 0; i < 1024; ++i)
        many += "processor\t: " + std::to_string(i) + "\nvendor_id\t: GenuineIntel\ncpu family\t: 6\nmodel\t\t: 85\n" +
                "model name\t: Intel(R) Xeon(R)\nstepping\t: 7\ncpu MHz\t\t: 2500.123\nphysical id\t: " +
                std::to_string(i / 512) + "\n\n";
    const auto packages = processorPackages(many);
    ASSERT_EQ(packages.size(), 2u);
    EXPECT_EQ(packages[1].name, "Intel(R) Xeon(R)");
    EXPECT_EQ(packages[1].caption, "GenuineIntel Family 6 Model 85 Stepping 7");
    EXPECT_EQ(packages[1].processor, 512u);
    EXPECT_EQ(packages[1].megahertz, 2500u);

    const auto arm = processorPackages("processor\t: 0\nBogoMIPS\t: 50.00\n\nprocessor\t: 1\n\nHardware\t: BCM2835\n");
    ASSERT_EQ(arm.size(), 1u);
    EXPECT_EQ(arm[0].name, "");
    for (const char* const garbage : {"", "\n\n\n", ":::\n:", "no colon", "\xff\xfe: \x00"})
        EXPECT_TRUE(processorPackages(garbage).empty()) << garbage;
    EXPECT_EQ(processorPackages("processor : many\ncpu MHz : fast").front().megahertz, 0u);
}

TEST(SystemText, PciNames)
{
    const std::string list =
        "# comment\n1002  Advanced Micro Devices, Inc. [AMD/ATI]\n\t73bf  Navi 21\n\t\t1002 0e3a  RX\n"
        "10de  NVIDIA Corporation\n# in between\n\t2204  GA102 [GeForce RTX 3090]\n"
        "\t2205  \xff\xfe\n8086  Intel Corporation\n\t73bf  Not AMD\n";
    EXPECT_EQ(pciDeviceName(list, 0x10de, 0x2204), "NVIDIA Corporation GA102 [GeForce RTX 3090]");
    EXPECT_EQ(pciDeviceName(list, 0x8086, 0x73bf), "Intel Corporation Not AMD");
    EXPECT_EQ(pciDeviceName(list, 0x1002, 0x2204), "Advanced Micro Devices, Inc. [AMD/ATI] device 2204");
    EXPECT_EQ(pciDeviceName(list, 0x10de, 0x2205), "NVIDIA Corporation device 2205");
    EXPECT_EQ(pciDeviceName("", 0x10de, 0x2204), "NVIDIA device 2204");
    EXPECT_EQ(pciDeviceName("", 0xabcd, 0x0001), "PCI device abcd:0001");
    EXPECT_EQ(pciDeviceName("10de  First\n\t0001  One", 0x10de, 1), "First One");
    EXPECT_EQ(pciDeviceName("\n10de  ", 0x10de, 1), "NVIDIA device 0001");
}

TEST(Edid, NamesTheMonitor)
{
    MonitorText monitor;
    ASSERT_TRUE(parseEdid(edidBlock("DELL U2720Q\n "), monitor));
    EXPECT_EQ(monitor.name, "DELL U2720Q");
    EXPECT_EQ(monitor.screen.width, 3840u);
    EXPECT_EQ(monitor.screen.height, 2160u);
    ASSERT_TRUE(parseEdid(edidBlock("thirteen byte"), monitor));
    EXPECT_EQ(monitor.name, "thirteen byte");
    for (const std::string& text : {std::string("\xff\xff\xff"), std::string("\n"), std::string(13, '\x01')})
    {
        ASSERT_TRUE(parseEdid(edidBlock(text) + std::string(128, 'x'), monitor));
        EXPECT_EQ(monitor.name, "DEL A0B1");
    }
    ASSERT_TRUE(parseEdid(edidBlock("SERIAL", 0xff), monitor));
    EXPECT_EQ(monitor.name, "DEL A0B1") << "a serial number is no name";
    std::string odd = edidBlock("");
    odd.replace(8, 2, "\xff\xff");
    odd.replace(54, 18, std::string(18, '\0'));
    ASSERT_TRUE(parseEdid(sealed(odd), monitor));
    EXPECT_EQ(monitor.name, "??? A0B1");
    EXPECT_EQ(monitor.screen.width, 0u);

    // Only the first timing is the preferred one, a clock may have a low byte of 0, and no side may be missing.
    const struct
    {
        const char* timing;
        std::uint32_t width, height;
    } timings[] = {{"\x00\xd0\x80\xa0\x70\x38\x1f\x40", 1920, 1080},
                   {"\x01\x1d\x00\x72\x0f\xd0\x1e\x20", 0, 0},
                   {"\x01\x1d\x80\x72\x70\x00\x1e\x0f", 0, 0}};
    for (const auto& row : timings)
    {
        std::string block = edidBlock("");
        block.replace(108, 18, block.substr(54, 18));
        block.replace(54, 8, std::string(row.timing, 8));
        block.replace(8, 2, std::string(2, '\0'));
        ASSERT_TRUE(parseEdid(sealed(block), monitor));
        EXPECT_EQ(monitor.name, "??? A0B1");
        EXPECT_EQ(monitor.screen.width, row.width);
        EXPECT_EQ(monitor.screen.height, row.height);
    }
}

TEST(Edid, RefusesWhatIsNone)
{
    const std::string good = edidBlock("NAME\n");
    std::string wrongSum = good;
    wrongSum[100] = 'x';
    std::string wrongHeader = good;
    wrongHeader[1] = 'x';
    for (const std::string& bytes : {std::string(), good.substr(0, 127), wrongSum, sealed(wrongHeader),
                                     std::string(128, '\0'), std::string(1 << 20, '\xff')})
    {
        MonitorText monitor{"kept", {}};
        EXPECT_FALSE(parseEdid(bytes, monitor)) << bytes.size();
        EXPECT_EQ(monitor.name, "kept");
    }
}

WindowsFacts windows(std::uint32_t major, std::uint32_t minor, std::uint32_t build, bool isServer = false)
{
    WindowsFacts facts;
    facts.major = major;
    facts.minor = minor;
    facts.build = build;
    facts.isServer = isServer;
    facts.kernel32 = {10, 0, 19041, 1};
    return facts;
}

TEST(OsText, WindowsEditions)
{
    const std::string ten = "10 / Server 2016 Technical Preview";
    const std::pair<WindowsFacts, std::string> rows[] = {
        {windows(5, 2, 7), "XP 64-Bit Edition (v5.2.7"},
        {windows(5, 2, 7, true), "Server 2003 / Server 2003 R2 (v5.2.7"},
        {windows(5, 1, 7, true), "Unknown Windows version (v5.1.7"},
        {windows(6, 1, 7, true), "Server 2008 R2 (v6.1.7"},
        {windows(6, 3, 7, true), "8.1 / Server 2012 R2 (v6.3.7"},
        {windows(10, 0, 19045), ten + " (v10.0.19045"},
        {windows(10, 0, 22000), ten + " or above (v10.0.22000"},
        {windows(10, 1, 7), ten + " or above (v10.1.7"},
        {windows(11, 0, 7, true), ten + " or above (v11.0.7"},
        {windows(6, 4, 7), "Unknown Windows version (v6.4.7"},
        {windows(0, 0, 0), "Unknown Windows version (v0.0.0"},
    };
    for (const auto& [facts, text] : rows)
        EXPECT_EQ(describeOs(facts), "Windows " + text + " SP0.0, kernel32 v10.0.19041.1)");
}

TEST(OsText, TheRegistryCorrectsALimitedVersion)
{
    WindowsFacts facts = windows(6, 2, 9200);
    facts.registryMajor = 10;
    facts.registryBuild = "19045";
    facts.editionId = "Professional";
    facts.releaseId = "2009";
    facts.is64Bit = true;
    facts.servicePackMajor = 1;
    EXPECT_EQ(describeOs(facts),
              "Windows 10 / Server 2016 Technical Preview Professional 2009 64bit (v10.0.19045 SP1.0, "
              "kernel32 v10.0.19041.1)");
    facts.registryMajor = 0;
    facts.registryBuild = "99999999999";
    facts.editionId = "\xff\xff";
    facts.releaseId = "";
    EXPECT_EQ(describeOs(facts), "Windows 8 64bit (v6.2.9200 SP1.0, kernel32 v10.0.19041.1)");
}

TEST(OsText, Linux)
{
    const struct
    {
        const char *osRelease, *kernel, *text;
    } rows[] = {
        {"NAME=\"Debian\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n", "6.1.0-18-amd64",
         "Linux Debian GNU/Linux 12 (bookworm) (v6.1.0, kernel 6.1.0-18-amd64)"},
        {"PRETTY_NAME='A \"B\"'", "5.15.167.4-x", "Linux A \"B\" (v5.15.167, kernel 5.15.167.4-x)"},
        {"PRETTY_NAME=\"a \\\"b\\\" \\$c", "6", "Linux a \"b\" $c (v6.0.0, kernel 6)"},
        {"PRETTY_NAME_X=no\nPRETTY_NAME='a\\'b\n", "6", "Linux a\\ (v6.0.0, kernel 6)"},
        {"PRETTY_NAME=\"a\\\n\"", "6", "Linux a\\ (v6.0.0, kernel 6)"},
        {"NAME=Alpine", "", "Linux Alpine (v0.0.0, kernel unknown)"},
        {"", "x.y", "Linux Unknown distribution (v0.0.0, kernel x.y)"},
        {"PRETTY_NAME=\"\xff\xff\"\nNAME=\"", "99999999999.1",
         "Linux Unknown distribution (v0.0.0, kernel 99999999999.1)"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(describeOs(LinuxFacts{row.osRelease, row.kernel, false}), row.text);
    EXPECT_EQ(describeOs(OsFacts()), "Unknown OS");
}

TEST(Management, AsksExactlyAndTypesTheAnswers)
{
    std::vector<std::string> asked;
    const ManagementSelect select = [&](const ManagementQuery& query) -> std::vector<ManagementRow>
    {
        asked.push_back(query.text);
        if (query.className == "Win32_VideoController")
            return {{{"Caption", "One"}, {"AdapterRAM", -1073741824}, {"DriverDate", "20240131000000.000000-000"}},
                    {{"Caption", "Two\n"}, {"AdapterRAM", "many"}, {"DriverDate", "2024"}, {"Other", 5}}};
        if (query.className == "Win32_ComputerSystem")
            return {{{"TotalPhysicalMemory", "68719476736"}, {"Name", "host"}}, {{"Name", "another"}}};
        return {};
    };
    ky::kyVariant::kyVariantMapImpl map;
    collectManagement(select, true, map);
    collectManagement(select, false, map);
    const std::vector<std::string> same = {
        "SELECT Caption, BuildNumber,Version, OSArchitecture FROM Win32_OperatingSystem",
        "SELECT Caption,Name,MaxClockSpeed FROM Win32_Processor",
        "SELECT DriverDate,DriverVersion,Caption,AdapterRAM, "
        "Description,CurrentHorizontalResolution,CurrentVerticalResolution FROM Win32_VideoController",
        "SELECT Name,ScreenHeight,ScreenWidth FROM Win32_DesktopMonitor"};
    std::vector<std::string> expected = same;
    expected.push_back("SELECT Manufacturer,Model,TotalPhysicalMemory, SystemFamily,Domain,UserName, Name FROM "
                       "Win32_ComputerSystem");
    expected.insert(expected.end(), same.begin(), same.end());
    expected.push_back("SELECT Manufacturer,Model,TotalPhysicalMemory, SystemFamily FROM Win32_ComputerSystem");
    EXPECT_EQ(asked, expected);

    EXPECT_EQ(map.getValuePath("videocontroller/1/adapterram"), ky::kyVariant(3221225472));
    EXPECT_EQ(map.getValuePath("videocontroller/1/driverdate"), ky::kyVariant("2024-01-31"));
    EXPECT_EQ(map.getValuePath("videocontroller/2/caption"), ky::kyVariant("Two"));
    EXPECT_EQ(map.getValuePath("videocontroller/2/adapterram"), ky::kyVariant(0));
    EXPECT_EQ(map.getValuePath("videocontroller/2/driverdate"), ky::kyVariant(""));
    EXPECT_EQ(map.findPath("videocontroller/2/other"), nullptr);
    EXPECT_EQ(map.getValuePath("computersystem/totalphysicalmemory"), ky::kyVariant(68719476736));
    EXPECT_EQ(map.findPath("computersystem/name"), nullptr) << "only in the full map";
    EXPECT_EQ(map.getValuePath("operatingsystem/caption"), ky::kyVariant("")) << "the one row is there without answer";
    EXPECT_EQ(map.getValuePath("desktopmonitor").toMap().size(), 0u);
}

TEST(Management, FailureTexts)
{
    using Step = ManagementStep;
    const std::tuple<Step, std::uint32_t, const char*> rows[] = {
        {Step::InitializeCom, 0x80010106, "Failed to initialize COM library. Error code = 0x80010106"},
        {Step::InitializeSecurity, 1, "Failed to initialize security. Error code = 0x1"},
        {Step::CreateLocator, 0x8007000e, "Failed to create IWbemLocator object. Err code = 0x8007000e"},
        {Step::Connect, 0, "Could not connect. Error code = 0x0"},
        {Step::SetBlanket, 0xabc, "Could not set proxy blanket. Error code = 0xabc"},
    };
    for (const auto& [step, code, text] : rows)
        EXPECT_EQ(managementFailureText(step, code), text);
}

} // namespace
