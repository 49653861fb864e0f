// SPDX-License-Identifier: MIT
#include "sysinfo/os_native.h"

#include "sysinfo/machine_linux.h"

#include <string_view>
#include <sys/utsname.h>

namespace ky::impl::native
{

LinuxFacts linuxFacts(const SystemFiles& files)
{
    LinuxFacts facts;
    facts.osRelease = files.read("/etc/os-release", 64 * 1024);
    if (facts.osRelease.empty())
        facts.osRelease = files.read("/usr/lib/os-release", 64 * 1024);
    utsname names = {};
    if (uname(&names) == 0)
    {
        facts.kernelRelease = names.release;
        facts.is64Bit = std::string_view(names.machine).find("64") != std::string_view::npos;
    }
    return facts;
}

OsFacts queryOs() { return linuxFacts(SystemFiles()); }

} // namespace ky::impl::native
