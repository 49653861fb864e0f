// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ky::impl::native
{

enum class RegistryHive
{
    LocalMachine,
    CurrentUser
};

/// The type number of the registry and the bytes as they are stored.
struct RegistryData
{
    std::uint32_t type = 0;
    std::vector<unsigned char> bytes;
};

/// Names are UTF-8. False when there is no such value or it may not be read.
bool readRegistry(RegistryHive hive, const std::string& key, const std::string& name, RegistryData& data);

} // namespace ky::impl::native
