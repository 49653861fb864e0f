// SPDX-License-Identifier: MIT
#include "diagnostics/log_file_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

namespace ky::impl::native
{

PathKind pathKind(const std::string& pathUtf8)
{
    const DWORD attributes = GetFileAttributesW(widePath(pathUtf8).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES)
    {
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
            return PathKind::Folder;
        return (attributes & FILE_ATTRIBUTE_DEVICE) != 0 ? PathKind::Other : PathKind::File;
    }
    const DWORD error = GetLastError();
    const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME;
    return missing ? PathKind::Nothing : PathKind::Other;
}

bool cutFile(const std::string& pathUtf8, std::int64_t size)
{
    const HANDLE file =
        CreateFileW(widePath(pathUtf8).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    LARGE_INTEGER end = {};
    end.QuadPart = size;
    const bool ok = SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file) != 0;
    CloseHandle(file);
    return ok;
}

} // namespace ky::impl::native
