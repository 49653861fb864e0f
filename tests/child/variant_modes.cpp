// SPDX-License-Identifier: MIT
#include "child/child_mode.h"
#include "support/temp_dir.h"

#include <ky/kyIniFile.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace
{

using namespace ky;

/// About 150 KB of text, different for both values of `which`.
kyVariant::kyVariantMapImpl settings(int which)
{
    kyVariant::kyVariantMapImpl tree;
    for (int key = 0; key < 3000; ++key)
        tree["key" + std::to_string(key)] = kyVariant(std::string(40, which == 0 ? 'a' : 'b'));
    return tree;
}

int saveOnce(const std::vector<std::string>& arguments)
{
    return SaveIniFile(arguments.at(0), settings(std::stoi(arguments.at(1))), false) ? 0 : 1;
}

/// Until killed. The second argument is made when the first save is about to begin.
int saveForever(const std::vector<std::string>& arguments)
{
    const kyVariant::kyVariantMapImpl trees[2] = {settings(0), settings(1)};
    const std::string& mark = arguments.at(1);
    std::ofstream(std::filesystem::path(std::u8string(mark.begin(), mark.end()))) << "started";
    for (std::size_t round = 0;; ++round)
    {
        if (!SaveIniFile(arguments.at(0), trees[round % 2], false))
            return 1;
    }
}

/// On a file system with room for less than two of the files.
int saveUntilFull(const std::vector<std::string>& arguments)
{
    const std::string& path = arguments.at(0);
    const kyVariant::kyVariantMapImpl small = {{"old", 1}};
    kyVariant::kyVariantMapImpl large = settings(0);
    large["large"] = kyVariant(std::string(300000, 'x'));
    for (int round = 0; round < 3; ++round)
    {
        if (!SaveIniFile(path, small, false) || SaveIniFile(path, large, false))
            return 1;
        kyVariant::kyVariantMapImpl found;
        if (!LoadIniFile(path, found) || found != small)
            return 2;
        const auto entries = std::filesystem::directory_iterator(std::filesystem::path(path).parent_path());
        if (std::distance(begin(entries), end(entries)) != 1)
            return 3;
    }
    return 0;
}

const ky::test::RegisterChildMode once("ini-save-once", &saveOnce);
const ky::test::RegisterChildMode forever("ini-save-forever", &saveForever);
const ky::test::RegisterChildMode untilFull("ini-full-disk", &saveUntilFull);

} // namespace
