// SPDX-License-Identifier: MIT
#include "filesystem/folder_ops_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <direct.h>
#include <io.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace ky::impl::native
{

bool isFolder(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(widePath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

ErrorCode removeEmptyFolder(const std::string& path)
{
    return RemoveDirectoryW(widePath(path).c_str()) != 0 ? 0 : static_cast<ErrorCode>(GetLastError());
}

// This and the next take the bytes as text in the active code page; callers rely on it.
FolderState folderState(const std::string& path)
{
    struct _stat64 info = {};
    if (_stat64(path.c_str(), &info) != 0)
        return FolderState::Missing;
    return (info.st_mode & _S_IFDIR) != 0 ? FolderState::Folder : FolderState::NoFolder;
}

bool makeFolder(const std::string& path) { return _mkdir(path.c_str()) == 0 || errno == EEXIST; }

// Without the long-path prefix, which the working folder must not have.
bool setWorkingFolder(const std::string& path) { return SetCurrentDirectoryW(widen(path).c_str()) != 0; }

std::string workingFolder()
{
    std::wstring folder(MAX_PATH, L'\0');
    for (;;)
    {
        const DWORD length = GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), folder.data());
        const bool fits = length < folder.size();
        folder.resize(length);
        if (fits)
            return narrow(folder);
    }
}

bool temporaryVariable(std::string& value)
{
    const char* const found = std::getenv("TEMP");
    if (found != nullptr)
        value = found;
    return found != nullptr;
}

std::string systemTempFolder()
{
    constexpr DWORD longest = 260;
    std::array<wchar_t, 2048> folder{};
    const DWORD length = GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    return length > longest ? std::string() : narrow({folder.data(), length});
}

std::string uniqueName(const std::string& folder, const std::string& prefix)
{
    std::array<wchar_t, MAX_PATH + 1> name{};
    if (GetTempFileNameW(widen(folder).c_str(), widen(prefix).c_str(), 0, name.data()) == 0)
        return {};
    DeleteFileW(name.data());
    return narrow(name.data());
}

bool isNameTaken(const std::string& path) { return _waccess(widePath(path).c_str(), 0) == 0; }

bool programFolder(std::string& folder)
{
    std::array<wchar_t, 2048> buffer{};
    const DWORD length = GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    const std::wstring_view program(buffer.data(), length);
    folder = narrow(program.substr(0, program.rfind(L'\\')));
    return length != 0;
}

std::string volumeRoot(const std::string& path)
{
    std::string text = path;
    std::replace(text.begin(), text.end(), '/', '\\');
    const std::size_t colon = text.find(':');
    if (colon == 1)
        return text.substr(0, 1) + ":\\";
    if (colon != std::string::npos || text.rfind("\\\\", 0) != 0)
        return {};
    const std::size_t serverEnd = text.find('\\', 2);
    if (serverEnd == std::string::npos)
        return {};
    return text.substr(0, text.find('\\', serverEnd + 1)) + '\\';
}

bool freeBytes(const std::string& root, std::uint64_t& bytes)
{
    ULARGE_INTEGER available = {};
    if (GetDiskFreeSpaceExW(widen(root).c_str(), &available, nullptr, nullptr) == 0)
        return false;
    bytes = available.QuadPart;
    return true;
}

} // namespace ky::impl::native
