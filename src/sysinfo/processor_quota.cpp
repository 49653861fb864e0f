// SPDX-License-Identifier: MIT
#include "sysinfo/processor_quota.h"

#include "text/character_class.h"

#include <algorithm>

namespace ky::impl
{

namespace
{

/// Where the process stands in the two hierarchies; a path is empty when it is in none.
struct GroupPaths
{
    std::string unified;
    std::string processor;
};

/// Lines id:controllers:path, with id 0 and no controllers for version 2.
GroupPaths readGroupPaths(const SystemTree& tree)
{
    GroupPaths paths;
    const std::string text = tree.read("/proc/self/cgroup");
    std::string_view rest = text;
    while (!rest.empty())
    {
        std::string_view path = nextPiece(rest, '\n');
        const std::string_view id = nextPiece(path, ':');
        const std::string_view controllers = nextPiece(path, ':');
        if (id == "0" && controllers.empty())
            paths.unified = path;
        else if (listHolds(controllers, "cpu"))
            paths.processor = path;
    }
    return paths;
}

std::uint64_t roundedUp(std::int64_t quota, std::int64_t period)
{
    if (quota <= 0 || period <= 0)
        return 0;
    return static_cast<std::uint64_t>(quota / period + (quota % period != 0 ? 1 : 0));
}

std::uint64_t unifiedQuota(const SystemTree& tree, const std::string& folder)
{
    const std::string text = tree.read(folder + "/cpu.max");
    std::string_view rest = text;
    const std::int64_t quota = leadingNumber(nextPiece(rest, ' '));
    constexpr std::int64_t defaultPeriod = 100000;
    return roundedUp(quota, trimmed(rest).empty() ? defaultPeriod : leadingNumber(rest));
}

std::uint64_t processorGroupQuota(const SystemTree& tree, const std::string& folder)
{
    return roundedUp(leadingNumber(tree.read(folder + "/cpu.cfs_quota_us")),
                     leadingNumber(tree.read(folder + "/cpu.cfs_period_us")));
}

std::uint64_t smallerBound(std::uint64_t a, std::uint64_t b) { return a == 0 || b == 0 ? a + b : std::min(a, b); }

/// The path below the mount point. Inside a container without a name space of its own the process's path leads from the
/// host's root, and the mount shows the container's group only.
std::string belowMount(const Mount& mount, const std::string& path)
{
    const std::string root = mount.root == "/" ? std::string() : mount.root;
    const bool inside =
        path.compare(0, root.size(), root) == 0 && (path.size() == root.size() || path[root.size()] == '/');
    if (!inside || path.find("/..") != std::string::npos)
        return {};
    return path.size() - root.size() > 1 ? path.substr(root.size()) : std::string();
}

template <typename QuotaOf>
std::uint64_t smallestQuota(const SystemTree& tree, const Mount& mount, const std::string& path, QuotaOf quotaOf)
{
    std::string below = belowMount(mount, path);
    std::uint64_t smallest = quotaOf(tree, mount.point + below);
    while (!below.empty())
    {
        below = parentFolder(below);
        smallest = smallerBound(smallest, quotaOf(tree, mount.point + below));
    }
    return smallest;
}

} // namespace

std::uint64_t processorQuota(const SystemTree& tree)
{
    const GroupPaths paths = readGroupPaths(tree);
    std::uint64_t quota = 0;
    for (const Mount& mount : readMounts(tree))
    {
        if (mount.type == "cgroup2" && !paths.unified.empty())
            quota = smallerBound(quota, smallestQuota(tree, mount, paths.unified, unifiedQuota));
        else if (mount.type == "cgroup" && !paths.processor.empty() && listHolds(mount.options, "cpu"))
            quota = smallerBound(quota, smallestQuota(tree, mount, paths.processor, processorGroupQuota));
    }
    return quota;
}

} // namespace ky::impl
