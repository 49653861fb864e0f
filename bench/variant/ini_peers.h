// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace ky::bench
{

/// Another library's INI files. What it loaded stays its own business.
struct IniPeer
{
    const char* name;
    std::shared_ptr<void> (*load)(const std::string& path);
    void (*save)(const std::shared_ptr<void>& loaded, const std::string& path);
};

const std::vector<IniPeer>& iniPeers();

/// Hands the written bytes to the device.
void flushToDisk(std::FILE* file);

} // namespace ky::bench
