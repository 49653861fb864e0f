// SPDX-License-Identifier: MIT
#include "sysinfo/main_disk.h"

#include <algorithm>

namespace ky::impl
{

namespace
{

/// The folder that describes the block device of the mount. Some file systems show a device number of their own, with
/// major number 0; their source names a device then.
std::string deviceFolder(const SystemTree& tree, const Mount& mount)
{
    if (mount.device.compare(0, 2, "0:") != 0)
    {
        std::string folder = tree.resolve("/sys/dev/block/" + mount.device);
        if (!folder.empty())
            return folder;
    }
    if (mount.source.compare(0, 5, "/dev/") != 0)
        return {};
    const std::string node = tree.resolve(mount.source);
    const std::string_view name = lastName(node.empty() ? mount.source : node);
    return tree.resolve("/sys/class/block/" + std::string(name));
}

/// One step toward the disk; empty when `folder` is a disk.
std::string deviceBelow(const SystemTree& tree, const std::string& folder)
{
    if (!tree.read(folder + "/partition").empty())
        return std::string(parentFolder(folder));
    const std::vector<std::string> parts = tree.list(folder + "/slaves");
    return parts.empty() ? std::string() : tree.resolve(folder + "/slaves/" + parts.front());
}

} // namespace

std::string diskOfRoot(const SystemTree& tree)
{
    const std::vector<Mount> mounts = readMounts(tree);
    const auto root = std::find_if(mounts.rbegin(), mounts.rend(), [](const Mount& m) { return m.point == "/"; });
    if (root == mounts.rend())
        return {};
    std::string folder = deviceFolder(tree, *root);
    // Encrypted volumes on logical volumes on arrays of partitions are five steps; a loop ends somewhere.
    for (int step = 0; step < 16; ++step)
    {
        std::string below = deviceBelow(tree, folder);
        if (below.empty())
            break;
        folder = std::move(below);
    }
    std::string name(lastName(folder));
    // The kernel writes '/' in the names of devices as '!' there.
    std::replace(name.begin(), name.end(), '!', '/');
    return name.empty() ? std::string() : "/dev/" + name;
}

} // namespace ky::impl
