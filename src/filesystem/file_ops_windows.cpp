// SPDX-License-Identifier: MIT
#include "filesystem/file_ops_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <aclapi.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace ky::impl::native
{

namespace
{

// FILETIME counts 100 ns from 1601 on.
std::int64_t toUnixTime(const FILETIME& time)
{
    constexpr std::int64_t ticksPerSecond = 10'000'000;
    constexpr std::int64_t secondsTo1970 = 11'644'473'600;
    const auto ticks =
        static_cast<std::int64_t>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
    return ticks / ticksPerSecond - secondsTo1970;
}

/// For paths with the long-path prefix, whose '?' the C runtime takes for a wildcard.
bool queryLongPath(const std::wstring& path, FileStatus& status)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (path.rfind(L"\\\\?\\", 0) != 0 || GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) == 0)
        return false;
    status.lastAccess = toUnixTime(data.ftLastAccessTime);
    status.creation = toUnixTime(data.ftCreationTime);
    status.lastModified = toUnixTime(data.ftLastWriteTime);
    status.size = static_cast<std::int64_t>((static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow);
    status.hasType = true;
    status.isFolder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return true;
}

bool isLink(const std::wstring& path)
{
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(path.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    FindClose(search);
    return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(found.dwReserved0);
}

/// Applies a list that gives the group every right.
bool applyGrant(const std::wstring& path, PSID group)
{
    EXPLICIT_ACCESSA access = {};
    access.grfAccessPermissions = 0xFFFFFFFF;
    access.grfAccessMode = GRANT_ACCESS;
    access.grfInheritance = NO_INHERITANCE;
    access.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    access.Trustee.TrusteeType = TRUSTEE_IS_WELL_KNOWN_GROUP;
    access.Trustee.ptstrName = static_cast<LPSTR>(group);
    PACL list = nullptr;
    if (SetEntriesInAclA(1, &access, nullptr, &list) != ERROR_SUCCESS)
        return false;
    SECURITY_DESCRIPTOR descriptor = {};
    const bool done = InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) != 0 &&
                      SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE) != 0 &&
                      SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, &descriptor) != 0;
    LocalFree(list);
    return done;
}

} // namespace

bool queryStatus(const std::string& path, FileStatus& status)
{
    const std::wstring wide = widePath(path);
    struct _stat64 info = {};
    if (_wstat64(wide.c_str(), &info) != 0)
        return queryLongPath(wide, status);
    status.lastAccess = info.st_atime;
    status.creation = info.st_ctime;
    status.lastModified = info.st_mtime;
    status.size = info.st_size;
    status.hasType = (info.st_mode & _S_IFMT) != 0;
    status.isFolder = (info.st_mode & _S_IFDIR) != 0;
    return true;
}

bool copyFile(const std::string& source, const std::string& destination, bool overwrite)
{
    return CopyFileW(widePath(source).c_str(), widePath(destination).c_str(), overwrite ? FALSE : TRUE) != 0;
}

ErrorCode moveFile(const std::string& from, const std::string& to)
{
    const BOOL moved =
        MoveFileExW(widePath(from).c_str(), widePath(to).c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED);
    return moved == 1 ? 0 : static_cast<ErrorCode>(GetLastError());
}

bool deleteFile(const std::string& path) { return DeleteFileW(widePath(path).c_str()) != 0; }

bool grantEverything(const std::string& path)
{
    const std::wstring wide = widePath(path);
    SID_IDENTIFIER_AUTHORITY world = SECURITY_WORLD_SID_AUTHORITY;
    PSID everyone = nullptr;
    if (isLink(wide) || AllocateAndInitializeSid(&world, 1, SECURITY_WORLD_RID, 0, 0, 0, 0, 0, 0, 0, &everyone) == 0)
        return false;
    const bool done = applyGrant(wide, everyone);
    FreeSid(everyone);
    return done;
}

} // namespace ky::impl::native
