// SPDX-License-Identifier: MIT
#include "filesystem/file_ops_native.h"

#include <ky/kyDirUtils.h>

#include <tuple>
#include <utility>

namespace ky
{

namespace native = impl::native;

kyFileInfoUtf8::kyFileInfoUtf8() : exists(false), typed(false), folder(false) {}

void kyFileInfoUtf8::clearInfos() { *this = kyFileInfoUtf8(); }

bool kyFileInfoUtf8::operator==(const kyFileInfoUtf8& other) const
{
    const auto values = [](const kyFileInfoUtf8& info)
    {
        return std::make_tuple(info.lastAccess, info.creation, info.lastModified, info.size, bool{info.exists},
                               bool{info.typed}, bool{info.folder});
    };
    return values(*this) == values(other) && path == other.path;
}

bool kyDirUtils::FileExistsUtf8(const std::string& path)
{
    native::FileStatus status;
    return native::queryStatus(path, status);
}

bool kyDirUtils::GetFileInfoUtf8(const std::string& path, kyFileInfoUtf8& info)
{
    kyFileInfoUtf8 found; // the path may be that of the record
    found.path = path;
    native::FileStatus status;
    if (native::queryStatus(path, status))
    {
        found.lastAccess = status.lastAccess;
        found.creation = status.creation;
        found.lastModified = status.lastModified;
        found.size = status.size;
        found.exists = true;
        found.typed = status.hasType;
        found.folder = status.isFolder;
    }
    info = std::move(found);
    return info.exists;
}

bool kyDirUtils::CopyFileUtf8(const std::string& source, const std::string& destination, bool overwrite)
{
    return native::copyFile(source, destination, overwrite);
}

bool kyDirUtils::RenameFileUtf8(const std::string& oldPath, const std::string& newPath, std::string* error)
{
    const native::ErrorCode code = native::moveFile(oldPath, newPath);
    if (code != 0 && error != nullptr)
        *error = "MoveFileExW error " + std::to_string(static_cast<unsigned>(code));
    return code == 0;
}

bool kyDirUtils::RemoveFileUtf8(const std::string& path) { return native::deleteFile(path); }

bool kyDirUtils::GrantAllFilePermissionsUtf8(const std::string& path) { return native::grantEverything(path); }

} // namespace ky
