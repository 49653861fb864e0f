// SPDX-License-Identifier: MIT
#include "filesystem/folder_ops_native.h"
#include "filesystem/path_at_linux.h"
#include "filesystem/system_path_linux.h"

#include "platform/posix_retry.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

constexpr int nameTries = 100;

struct FreeMemory
{
    void operator()(char* memory) const { std::free(memory); }
};
using SystemText = std::unique_ptr<char, FreeMemory>;

std::string textOf(const SystemText& text) { return text == nullptr ? std::string() : text.get(); }

std::string withoutEndSeparators(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

/// Which mount a folder belongs to; a volume may be mounted in several places.
struct Mount
{
    explicit Mount(const std::string& folder)
        : isKnown(statx(AT_FDCWD, folder.c_str(), AT_STATX_DONT_SYNC, STATX_TYPE | STATX_MNT_ID, &info) == 0)
    {
    }
    bool operator==(const Mount& other) const
    {
        return isKnown == other.isKnown && info.stx_dev_major == other.info.stx_dev_major &&
               info.stx_dev_minor == other.info.stx_dev_minor && info.stx_mnt_id == other.info.stx_mnt_id;
    }

    struct statx info = {};
    bool isKnown;
};

/// Of a path from the root on; "/" when nothing on the way exists.
std::string existingPart(std::string path)
{
    SystemText resolved;
    for (;;)
    {
        resolved.reset(realpath(path.c_str(), nullptr));
        if (resolved != nullptr || path == "/")
            return textOf(resolved);
        path = withoutEndSeparators(std::string(folderPart(path)));
    }
}

} // namespace

bool isFolder(const std::string& path) { return folderState(path) == FolderState::Folder; }

FolderState folderState(const std::string& path)
{
    const PathAt at(path);
    struct stat info = {};
    if (fstatat(at.folder(), at.name(), &info, 0) != 0)
        return FolderState::Missing;
    return S_ISDIR(info.st_mode) ? FolderState::Folder : FolderState::NoFolder;
}

ErrorCode removeEmptyFolder(const std::string& path)
{
    // A separator behind a link would lead through it.
    const PathAt at(withoutEndSeparators(systemPath(path)));
    return unlinkat(at.folder(), at.name(), AT_REMOVEDIR) == 0 ? 0 : errno;
}

bool makeFolder(const std::string& path)
{
    const PathAt at(path);
    return mkdirat(at.folder(), at.name(), S_IRWXU | S_IRWXG | S_IRWXO) == 0 || (errno == EEXIST && isFolder(path));
}

bool setWorkingFolder(const std::string& path)
{
    const int folder = openPath(systemPath(path), O_PATH | O_DIRECTORY | O_CLOEXEC);
    const bool isSet = folder >= 0 && fchdir(folder) == 0;
    if (folder >= 0)
        ::close(folder);
    return isSet;
}

std::string workingFolder() { return textOf(SystemText(getcwd(nullptr, 0))); }

// Programs that run with more rights than their caller do not let the caller choose.
bool temporaryVariable(std::string& value)
{
    const char* const found = secure_getenv("TEMP");
    if (found != nullptr)
        value = found;
    return found != nullptr;
}

std::string systemTempFolder()
{
    const char* const found = secure_getenv("TMPDIR");
    return found != nullptr && isFolder(found) ? found : "/tmp";
}

std::string uniqueName(const std::string& folder, const std::string& prefix)
{
    constexpr std::string_view refused("/\\\0", 3);
    if (folder.empty() || prefix.find_first_of(refused) != std::string::npos)
        return {};
    std::string start = systemPath(folder);
    start += start.back() == '/' ? prefix : "/" + prefix;
    for (int i = 0; i < nameTries; ++i)
    {
        std::string name = start + randomName() + ".tmp";
        const PathAt at(name);
        const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        const int file = retryInterrupted([&] { return openat(at.folder(), at.name(), flags, S_IRUSR | S_IWUSR); });
        if (file >= 0)
        {
            ::close(file);
            unlinkat(at.folder(), at.name(), 0);
            return name;
        }
        if (errno != EEXIST)
            break;
    }
    return {};
}

bool isNameTaken(const std::string& path)
{
    const PathAt at(path);
    struct stat info = {};
    return fstatat(at.folder(), at.name(), &info, AT_SYMLINK_NOFOLLOW) == 0;
}

bool programFolder(std::string& folder)
{
    std::string program(PATH_MAX, '\0');
    const ssize_t length = readlink("/proc/self/exe", program.data(), program.size());
    if (length <= 0)
        return false;
    folder = program.substr(0, program.rfind('/', static_cast<std::size_t>(length)));
    return true;
}

std::string volumeRoot(const std::string& path)
{
    const std::string absolute = systemPath(path);
    if (absolute.empty() || absolute.front() != '/')
        return {};
    std::string root = existingPart(absolute);
    const Mount mount(root);
    while (mount.isKnown && root.size() > 1)
    {
        std::string above = withoutEndSeparators(std::string(folderPart(root)));
        if (!(Mount(above) == mount))
            break;
        root = std::move(above);
    }
    return root;
}

bool freeBytes(const std::string& root, std::uint64_t& bytes)
{
    struct statvfs volume = {};
    if (statvfs(root.c_str(), &volume) != 0)
        return false;
    bytes = std::uint64_t{volume.f_bavail} * volume.f_frsize;
    return true;
}

} // namespace ky::impl::native
