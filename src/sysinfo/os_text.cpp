// SPDX-License-Identifier: MIT
#include "sysinfo/os_text.h"

#include "sysinfo/system_text.h"

#include <charconv>
#include <string_view>
#include <vector>

namespace ky::impl
{

namespace
{

/// Version 10.0 covers later products; their build numbers tell them apart.
constexpr std::uint32_t firstBuildAfter10 = 22000;

struct Edition
{
    std::uint32_t major, minor;
    const char* workstation;
    const char* server;
};

constexpr Edition editions[] = {
    {5, 1, "XP", nullptr},
    {5, 2, "XP 64-Bit Edition", "Server 2003 / Server 2003 R2"},
    {6, 0, "Vista", "Server 2008"},
    {6, 1, "7", "Server 2008 R2"},
    {6, 2, "8", "Server 2012"},
    {6, 3, "8.1 / Server 2012 R2", "8.1 / Server 2012 R2"},
    {10, 0, "10 / Server 2016 Technical Preview", "10 / Server 2016 Technical Preview"},
};

std::string editionName(const WindowsFacts& facts)
{
    for (const Edition& edition : editions)
    {
        const char* const name = facts.isServer ? edition.server : edition.workstation;
        if (facts.major == edition.major && facts.minor == edition.minor && name != nullptr)
            return facts.major == 10 && facts.build >= firstBuildAfter10 ? std::string(name) + " or above" : name;
    }
    const Edition& last = *(std::end(editions) - 1);
    if (facts.major > last.major || (facts.major == last.major && facts.minor > last.minor))
        return std::string(last.workstation) + " or above";
    return "Unknown Windows version";
}

/// The numbers that the registry knows better.
WindowsFacts corrected(WindowsFacts facts)
{
    if (facts.registryMajor > facts.major)
    {
        facts.major = facts.registryMajor;
        facts.minor = facts.registryMinor;
    }
    const auto build = parseNumber(facts.registryBuild, 10);
    if (build && *build > facts.build && *build <= UINT32_MAX)
        facts.build = static_cast<std::uint32_t>(*build);
    return facts;
}

std::string joined(std::initializer_list<std::uint32_t> numbers)
{
    std::string text;
    for (const std::uint32_t number : numbers)
        text += (text.empty() ? "" : ".") + std::to_string(number);
    return text;
}

std::string windowsText(const WindowsFacts& reported)
{
    const WindowsFacts facts = corrected(reported);
    std::string name = editionName(facts);
    for (const std::string& part : {cleanLine(facts.editionId), cleanLine(facts.releaseId)})
        name += part.empty() ? "" : " " + part;
    if (facts.is64Bit)
        name += " 64bit";
    const auto& file = facts.kernel32;
    return "Windows " + name + " (v" + joined({facts.major, facts.minor, facts.build}) + " SP" +
           joined({facts.servicePackMajor, facts.servicePackMinor}) + ", kernel32 v" +
           joined({file[0], file[1], file[2], file[3]}) + ")";
}

/// The leading "a.b.c"; 0 for what is not there.
std::string leadingVersion(std::string_view release)
{
    std::uint32_t numbers[3] = {};
    const char* at = release.data();
    const char* const end = at + release.size();
    for (std::uint32_t& number : numbers)
    {
        const auto [stop, error] = std::from_chars(at, end, number);
        if (error != std::errc() || stop == end || *stop != '.')
            break;
        at = stop + 1;
    }
    return joined({numbers[0], numbers[1], numbers[2]});
}

std::string linuxText(const LinuxFacts& facts)
{
    std::string name = osReleaseValue(facts.osRelease, "PRETTY_NAME");
    if (name.empty())
        name = osReleaseValue(facts.osRelease, "NAME");
    if (name.empty())
        name = "Unknown distribution";
    if (facts.is64Bit)
        name += " 64bit";
    const std::string& release = facts.kernelRelease;
    return "Linux " + name + " (v" + leadingVersion(release) + ", kernel " + (release.empty() ? "unknown" : release) +
           ")";
}

} // namespace

LinuxFacts linuxFacts(const SystemTree& tree)
{
    LinuxFacts facts;
    facts.osRelease = tree.read("/etc/os-release");
    if (facts.osRelease.empty())
        facts.osRelease = tree.read("/usr/lib/os-release");
    facts.kernelRelease = cleanLine(tree.read("/proc/sys/kernel/osrelease"));
    return facts;
}

std::string describeOs(const OsFacts& facts)
{
    if (const auto* const windows = std::get_if<WindowsFacts>(&facts))
        return windowsText(*windows);
    if (const auto* const linuxFacts = std::get_if<LinuxFacts>(&facts))
        return linuxText(*linuxFacts);
    return "Unknown OS";
}

} // namespace ky::impl
