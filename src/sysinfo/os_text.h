// SPDX-License-Identifier: MIT
// The readable description of the operating system.
#pragma once

#include "sysinfo/system_tree.h"

#include <array>
#include <cstdint>
#include <string>
#include <variant>

namespace ky::impl
{

struct WindowsFacts
{
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t build = 0;
    std::uint32_t servicePackMajor = 0;
    std::uint32_t servicePackMinor = 0;
    bool isServer = false;
    bool is64Bit = false;
    /// From the registry, which knows what a version call may hide from programs made for older systems. 0 or empty
    /// when not there.
    std::uint32_t registryMajor = 0;
    std::uint32_t registryMinor = 0;
    std::string registryBuild;
    std::string editionId;
    std::string releaseId;
    std::array<std::uint32_t, 4> kernel32 = {}; ///< file version
};

struct LinuxFacts
{
    std::string osRelease;     ///< content of the os-release file
    std::string kernelRelease; ///< such as "6.1.0-18-amd64"
    bool is64Bit = sizeof(void*) == 8;
};

using OsFacts = std::variant<std::monostate, WindowsFacts, LinuxFacts>;

LinuxFacts linuxFacts(const SystemTree& tree);

/// "Windows EDITION (vMAJOR.MINOR.BUILD SPMAJOR.MINOR, kernel32 vA.B.C.D)", or "Linux DISTRIBUTION (vMAJOR.MINOR.PATCH,
/// kernel RELEASE)", with " 64bit" behind the name on a 64-bit system. "Unknown OS" without facts.
std::string describeOs(const OsFacts& facts);

} // namespace ky::impl
