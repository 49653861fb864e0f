// SPDX-License-Identifier: MIT
#include "filesystem/folder_walk_native.h"
#include "filesystem/path_native.h"
#include "filesystem/path_text.h"
#include "filesystem/system_path_linux.h"

#include <ky/kyStringUtils.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cwctype>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <vector>

namespace ky::impl::native
{

namespace
{

// Not named by the kernel's header of these numbers.
constexpr unsigned long cifsMagic = 0xFF534D42;
constexpr unsigned long cephMagic = 0x00C36400;

bool isShare(std::string_view path) { return path.substr(0, 2) == "\\\\"; }
bool hasDrive(std::string_view path) { return path.size() > 1 && path[1] == ':'; }

bool isNetworkVolume(int folder)
{
    struct statfs volume = {};
    if (fstatfs(folder, &volume) != 0)
        return false;
    const auto type = static_cast<unsigned long>(volume.f_type) & 0xFFFFFFFF;
    return type == NFS_SUPER_MAGIC || type == SMB_SUPER_MAGIC || type == SMB2_SUPER_MAGIC || type == cifsMagic ||
           type == cephMagic || type == AFS_SUPER_MAGIC || type == CODA_SUPER_MAGIC || type == V9FS_MAGIC;
}

/// Two slashes, server and share: no ".." leads out of them.
std::size_t shareLength(std::string_view path)
{
    const std::size_t share = path.find('/', 2);
    return share == std::string_view::npos ? path.size() : std::min(path.find('/', share + 1), path.size());
}

/// Resolves the components behind the root in the text.
std::string cleanUp(std::string_view path, std::size_t root)
{
    std::string result(path.substr(0, root));
    std::vector<std::size_t> starts; // of the components, their separators included
    for (std::size_t at = root; at < path.size();)
    {
        const std::size_t end = std::min(path.find('/', at), path.size());
        const std::string_view name = path.substr(at, end - at);
        if (name == ".." && !starts.empty())
        {
            result.resize(starts.back());
            starts.pop_back();
        }
        else if (!name.empty() && name != "." && name != "..")
        {
            starts.push_back(result.size());
            if (result.back() != '/')
                result += '/';
            result += name;
        }
        at = end + 1;
    }
    if (path.back() == '/' && result.back() != '/')
        result += '/';
    return result;
}

std::string currentFolder()
{
    std::string folder(256, '\0');
    while (getcwd(folder.data(), folder.size()) == nullptr)
    {
        if (errno != ERANGE)
            return {};
        folder.resize(2 * folder.size());
    }
    return folder.c_str();
}

/// Every letter in lower case, not those of ASCII alone.
std::wstring folded(const std::string& name)
{
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    std::wstring wide = kyStringUtils::convertToUnicode(name, kyStringUtils::Utf8);
    for (wchar_t& letter : wide)
    {
        const auto code = static_cast<wint_t>(letter);
        letter = static_cast<wchar_t>(locale == nullptr ? std::towlower(code) : towlower_l(code, locale));
    }
    return wide;
}

} // namespace

bool isRelativePath(const std::string& path) { return path.empty() || !(isSeparator(path.front()) || hasDrive(path)); }

bool isNetworkPath(const std::string& path)
{
    if (isShare(path) || isRelativePath(path) || hasDrive(path))
        return isShare(path);
    // Of a path that does not exist, or may not be entered, the nearest folder above answers.
    std::string above = systemPath(path);
    for (;;)
    {
        const int folder = openPath(above.empty() ? "/" : above, O_PATH | O_CLOEXEC);
        if (folder >= 0)
        {
            const bool result = isNetworkVolume(folder);
            ::close(folder);
            return result;
        }
        if (above.empty())
            return false;
        above.resize(above.rfind('/'));
    }
}

std::string absolutePath(const std::string& path)
{
    std::string full = systemPath(path);
    if (full.empty())
        return full;
    if (isShare(path))
        return cleanUp(full, shareLength(full));
    if (hasDrive(path))
    {
        if (full.substr(2, 1) != "/")
            full.insert(2, 1, '/');
        return cleanUp(full, 3);
    }
    if (full.front() != '/')
        full = currentFolder() + '/' + full;
    // The kernel tells about a current folder that is out of reach by a text that does not begin at the root.
    return full.front() == '/' ? cleanUp(full, 1) : std::string();
}

std::string storedName(const PathComponent& component)
{
    const std::string folder = systemPath(component.storedFolder);
    struct stat info = {};
    if (lstat((folder + component.name).c_str(), &info) == 0)
        return component.name;
    ErrorCode error = 0;
    OpenFolder listing = OpenFolder::openRoot(folder.empty() ? "." : folder, RootLink::Follow, error);
    if (!listing.isOpen())
        return {};
    const std::wstring wanted = folded(component.name);
    std::string best;
    for (FolderEntry entry; listing.next(entry);)
    {
        std::string name(entry.name);
        if ((best.empty() || name < best) && folded(name) == wanted)
            best = std::move(name);
    }
    return best;
}

} // namespace ky::impl::native
