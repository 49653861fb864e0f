// SPDX-License-Identifier: MIT
#include "platform/file_handle.h"

#include "platform/replace_windows.h"
#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <algorithm>
#include <utility>

namespace ky::impl::native
{

namespace
{

HANDLE toHandle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

DWORD accessOf(OpenMode mode)
{
    switch (mode)
    {
    case OpenMode::Read: return GENERIC_READ;
    // Without FILE_WRITE_DATA every write is an atomic append at the current end.
    case OpenMode::Append: return FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE;
    case OpenMode::Truncate:
    case OpenMode::CreateNew:
    case OpenMode::CreatePrivate: return GENERIC_WRITE | FILE_READ_ATTRIBUTES;
    }
    return GENERIC_READ;
}

DWORD dispositionOf(OpenMode mode)
{
    switch (mode)
    {
    case OpenMode::Read: return OPEN_EXISTING;
    case OpenMode::Append: return OPEN_ALWAYS;
    case OpenMode::Truncate: return CREATE_ALWAYS;
    case OpenMode::CreateNew:
    case OpenMode::CreatePrivate: return CREATE_NEW;
    }
    return OPEN_EXISTING;
}

ErrorCode lastError() { return static_cast<ErrorCode>(GetLastError()); }

} // namespace

FileHandle FileHandle::open(const std::string& pathUtf8, OpenMode mode, ErrorCode& error)
{
    FileHandle file;
    const HANDLE handle =
        CreateFileW(widePath(pathUtf8).c_str(), accessOf(mode), FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, dispositionOf(mode), FILE_ATTRIBUTE_NORMAL, nullptr);
    error = handle == INVALID_HANDLE_VALUE ? lastError() : 0;
    file.mHandle = reinterpret_cast<std::intptr_t>(handle);
    return file;
}

std::int64_t FileHandle::read(void* buffer, std::size_t size, ErrorCode& error)
{
    DWORD got = 0;
    const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(size, 0x7ffff000));
    const bool ok = ReadFile(toHandle(mHandle), buffer, wanted, &got, nullptr) != 0;
    error = ok ? 0 : lastError();
    return ok ? static_cast<std::int64_t>(got) : -1;
}

bool FileHandle::write(const void* data, std::size_t size, std::size_t& written, ErrorCode& error)
{
    written = 0;
    error = 0;
    const char* bytes = static_cast<const char*>(data);
    while (written < size)
    {
        DWORD count = 0;
        const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(size - written, 0x7ffff000));
        if (WriteFile(toHandle(mHandle), bytes + written, wanted, &count, nullptr) == 0 || count == 0)
        {
            error = count == 0 && GetLastError() == 0 ? ERROR_DISK_FULL : lastError();
            return false;
        }
        written += count;
    }
    return true;
}

std::int64_t FileHandle::size() const
{
    LARGE_INTEGER size = {};
    return GetFileSizeEx(toHandle(mHandle), &size) != 0 ? size.QuadPart : -1;
}

bool FileHandle::seek(std::int64_t position)
{
    LARGE_INTEGER target = {};
    target.QuadPart = position;
    return SetFilePointerEx(toHandle(mHandle), target, nullptr, FILE_BEGIN) != 0;
}

bool FileHandle::truncate(std::int64_t size) { return seek(size) && SetEndOfFile(toHandle(mHandle)) != 0; }

bool FileHandle::flushToDisk() { return FlushFileBuffers(toHandle(mHandle)) != 0; }

bool FileHandle::close()
{
    if (!isOpen())
        return true;
    return CloseHandle(toHandle(std::exchange(mHandle, invalidHandle))) != 0;
}

bool pathExists(const std::string& pathUtf8)
{
    return GetFileAttributesW(widePath(pathUtf8).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::int64_t fileSizeOf(const std::string& pathUtf8)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (GetFileAttributesExW(widePath(pathUtf8).c_str(), GetFileExInfoStandard, &data) == 0)
        return -1;
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow);
}

ErrorCode removeFile(const std::string& pathUtf8)
{
    return DeleteFileW(widePath(pathUtf8).c_str()) != 0 ? 0 : lastError();
}

ErrorCode renameFile(const std::string& from, const std::string& to)
{
    const bool ok = MoveFileExW(widePath(from).c_str(), widePath(to).c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
    return ok ? 0 : lastError();
}

bool isMissingFile(ErrorCode code) { return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND; }

bool isRefusal(ErrorCode code) { return code == ERROR_ACCESS_DENIED || code == ERROR_WRITE_PROTECT; }

bool isReplaceable(const std::string& pathUtf8)
{
    const HANDLE handle =
        CreateFileW(widePath(pathUtf8).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return isMissingFile(lastError()) && !pathExists(pathUtf8);
    BY_HANDLE_FILE_INFORMATION info = {};
    const bool regular = GetFileType(handle) == FILE_TYPE_DISK && GetFileInformationByHandle(handle, &info) != 0 &&
                         (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    CloseHandle(handle);
    return regular;
}

ErrorCode passRights(const std::string& model, FileHandle&, const std::string& nameUtf8)
{
    const std::wstring from = widePath(model);
    const std::wstring to = widePath(nameUtf8);
    const DWORD attributes = GetFileAttributesW(from.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES)
    {
        copyAccessRights(from, to);
        SetFileAttributesW(to.c_str(), attributes);
    }
    return 0;
}

ErrorCode replaceFile(const std::string& temporary, const std::string& target)
{
    // Not ReplaceFileW: for a moment it leaves nothing under the target's name. A rename is one step.
    return renameOverOpenFile(widePath(temporary), widePath(target)) ? 0 : renameFile(temporary, target);
}

std::string resolveLinks(const std::string& pathUtf8)
{
    const HANDLE handle = CreateFileW(widePath(pathUtf8).c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return pathUtf8;
    std::wstring resolved(32768, L'\0');
    const DWORD length =
        GetFinalPathNameByHandleW(handle, resolved.data(), static_cast<DWORD>(resolved.size()), FILE_NAME_NORMALIZED);
    CloseHandle(handle);
    if (length == 0 || length >= resolved.size())
        return pathUtf8;
    resolved.resize(length);
    return narrow(resolved);
}

} // namespace ky::impl::native
