// SPDX-License-Identifier: MIT
#include "file_holder.h"

#include <windows.h>

namespace ky::test
{

FileHolder::FileHolder(const std::string& pathUtf8)
{
    wchar_t wide[1024] = {};
    MultiByteToWideChar(CP_UTF8, 0, pathUtf8.c_str(), -1, wide, 1024);
    const HANDLE file = CreateFileW(wide, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    mHandle = file == INVALID_HANDLE_VALUE ? 0 : reinterpret_cast<std::intptr_t>(file);
}

FileHolder::~FileHolder()
{
    if (holds())
        CloseHandle(reinterpret_cast<HANDLE>(mHandle));
}

} // namespace ky::test
