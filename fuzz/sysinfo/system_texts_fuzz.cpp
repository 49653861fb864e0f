// SPDX-License-Identifier: MIT
// The texts in which a system describes itself: whatever they hold, the answers are clean and in range.
#include "sysinfo/os_text.h"
#include "sysinfo/system_text.h"
#include "text/utf8_scan.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace
{

using namespace ky::impl;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void requireClean(const std::string& text)
{
    require(isUtf8(text));
    require(std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(data, data + size);
    requireClean(cleanLine(text));
    requireClean(osReleaseValue(text, "PRETTY_NAME"));
    requireClean(describeOs(LinuxFacts{text, cleanLine(text), true}));
    WindowsFacts windows;
    windows.registryBuild = windows.editionId = windows.releaseId = text;
    requireClean(describeOs(windows));
    for (const PackageText& package : processorPackages(text))
    {
        requireClean(package.name);
        requireClean(package.caption);
    }
    for (const std::uint16_t vendor : std::initializer_list<std::uint16_t>{0x8086, 0x10de, 0xffff})
    {
        const std::string name = pciDeviceName(text, vendor, 0x2204);
        requireClean(name);
        require(!name.empty() && name.size() <= 600);
    }
    const auto bytes = memoryInfoBytes(text, "MemTotal");
    require(!bytes || *bytes % 1024 == 0);
    const ScreenSize screen = parseScreenSize(text);
    require(screen.width <= 65535 && screen.height <= 65535 && (screen.width == 0) == (screen.height == 0));
    return 0;
}
