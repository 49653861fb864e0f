// SPDX-License-Identifier: MIT
#pragma once

#include "sysinfo/system_tree.h"

#include <map>
#include <string>
#include <vector>

namespace ky::test
{

/// Files by path and links by path; folders are what stands in the paths of files.
struct FakeTree
{
    std::map<std::string, std::string> files;
    std::map<std::string, std::string> links;

    impl::SystemTree tree() const
    {
        return {[this](const std::string& path) { return find(files, path); },
                [this](const std::string& path) { return names(path); },
                [this](const std::string& path) { return find(links, path); }};
    }

    static std::string find(const std::map<std::string, std::string>& where, const std::string& path)
    {
        const auto found = where.find(path);
        return found != where.end() ? found->second : std::string();
    }

    std::vector<std::string> names(const std::string& path) const
    {
        std::vector<std::string> all;
        for (const auto* const entries : {&files, &links})
        {
            for (const auto& entry : *entries)
            {
                if (entry.first.compare(0, path.size() + 1, path + "/") != 0)
                    continue;
                const std::string rest = entry.first.substr(path.size() + 1);
                const std::string name = rest.substr(0, rest.find('/'));
                if (all.empty() || all.back() != name)
                    all.push_back(name);
            }
        }
        return all;
    }
};

} // namespace ky::test
