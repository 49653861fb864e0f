// SPDX-License-Identifier: MIT
#include "filesystem/clear_folder.h"
#include "filesystem/folder_ops_native.h"
#include "filesystem/known_folders_native.h"
#include "filesystem/path_text.h"

#include <ky/kyDirUtils.h>
#include <ky/kyStringUtils.h>

namespace ky
{

namespace native = impl::native;
using native::KnownFolder;

namespace
{

/// What callers get instead of a folder that the system cannot tell.
constexpr const char* currentFolder = ".";

/// As many as the platform's own names of this form.
constexpr int temporaryNameTries = 0x10000;

bool makeExist(const std::string& folder)
{
    if (folder.empty())
        return true;
    const native::FolderState state = native::folderState(folder);
    return state == native::FolderState::Folder ||
           (state == native::FolderState::Missing && native::makeFolder(folder));
}

std::string folderOrCurrent(KnownFolder which)
{
    std::string folder = native::knownFolder(which);
    return folder.empty() ? currentFolder : folder;
}

} // namespace

bool kyDirUtils::DirExistsUtf8(const std::string& path) { return native::isFolder(path); }

bool kyDirUtils::MkpathUtf8(const std::string& path)
{
    const std::string folder = impl::withBackslashes(path);
    for (std::size_t at = folder.find('\\'); at != std::string::npos; at = folder.find('\\', at + 1))
    {
        if (!makeExist(folder.substr(0, at)))
            return false;
    }
    return makeExist(folder);
}

bool kyDirUtils::ClearFolderUtf8(const std::string& path, bool removeFolder, std::string* error, const bool* cancel)
{
    std::string failure;
    if (DirExistsUtf8(path))
    {
        const bool isCanceled = cancel != nullptr && *cancel;
        failure = impl::clearFolder(path, removeFolder, isCanceled);
    }
    const bool isDone = failure.empty();
    if (error != nullptr)
        *error = std::move(failure);
    return isDone;
}

bool kyDirUtils::SetCurrentWorkingDirUtf8(const std::string& path) { return native::setWorkingFolder(path); }

std::string kyDirUtils::GetCurrentWorkingDirUtf8() { return native::workingFolder(); }

std::string kyDirUtils::GetTempFolderUtf8()
{
    std::string folder;
    if (!native::temporaryVariable(folder))
    {
        folder = native::systemTempFolder();
        if (folder.empty())
            folder = currentFolder;
    }
    return impl::withSlashes(std::move(folder));
}

std::string kyDirUtils::GetTempFileUtf8(const std::string& folder, const std::string& prefix)
{
    return native::uniqueName(folder, prefix);
}

std::string kyDirUtils::GetTempFileUtf8(const std::string& folder, const std::string& prefix,
                                        const std::string& extension)
{
    for (int i = 0; i < temporaryNameTries; ++i)
    {
        std::string name = native::uniqueName(folder, prefix);
        kyStringUtils::replace(name, ".tmp", extension);
        if (name.empty() || !native::isNameTaken(name))
            return name;
    }
    return {};
}

bool kyDirUtils::GetFolderOfCurrentProcessUtf8(std::string& folder)
{
    folder.clear();
    return native::programFolder(folder);
}

unsigned long long kyDirUtils::GetAvailableDiskSizeUtf8(const std::string& path, std::string& root)
{
    std::uint64_t bytes = 0;
    root = native::volumeRoot(path);
    if (root.empty() || !native::freeBytes(root, bytes))
    {
        root.clear();
        return 0;
    }
    return bytes;
}

std::string kyDirUtils::GetFontFolderUtf8() { return folderOrCurrent(KnownFolder::Fonts); }
std::string kyDirUtils::GetCommonAppDataFolderUtf8() { return folderOrCurrent(KnownFolder::CommonAppData); }
std::string kyDirUtils::GetLocalAppDataFolderUtf8() { return folderOrCurrent(KnownFolder::LocalAppData); }
std::string kyDirUtils::GetAppDataFolderUtf8() { return folderOrCurrent(KnownFolder::AppData); }
std::string kyDirUtils::GetPicturesFolderUtf8() { return folderOrCurrent(KnownFolder::Pictures); }
std::string kyDirUtils::GetDocumentsFolderUtf8() { return folderOrCurrent(KnownFolder::Documents); }
std::string kyDirUtils::GetDownloadFolderUtf8() { return folderOrCurrent(KnownFolder::Download); }

} // namespace ky
