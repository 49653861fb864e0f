// SPDX-License-Identifier: MIT
#include "platform/replace_windows.h"

#include "platform/win32.h"

#include <aclapi.h>
#include <cstddef>
#include <cstring>
#include <vector>

namespace ky::impl::native
{

void copyAccessRights(const std::wstring& from, const std::wstring& to)
{
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetNamedSecurityInfoW(from.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list, nullptr,
                              &descriptor) != ERROR_SUCCESS)
        return;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    GetSecurityDescriptorControl(descriptor, &control, &revision);
    const DWORD inheritance = (control & SE_DACL_PROTECTED) != 0 ? PROTECTED_DACL_SECURITY_INFORMATION
                                                                 : UNPROTECTED_DACL_SECURITY_INFORMATION;
    SetNamedSecurityInfoW(std::wstring(to).data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | inheritance, nullptr,
                          nullptr, list, nullptr);
    LocalFree(descriptor);
}

bool renameOverOpenFile(const std::wstring& from, const std::wstring& to)
{
    const HANDLE file = CreateFileW(from.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    // The name follows the structure; its first character lies inside.
    const std::size_t nameSize = to.size() * sizeof(wchar_t);
    std::vector<std::byte> request(sizeof(FILE_RENAME_INFO) + nameSize);
    auto* const info = reinterpret_cast<FILE_RENAME_INFO*>(request.data());
    info->Flags = FILE_RENAME_FLAG_REPLACE_IF_EXISTS | FILE_RENAME_FLAG_POSIX_SEMANTICS;
    info->FileNameLength = static_cast<DWORD>(nameSize);
    std::memcpy(info->FileName, to.data(), nameSize);
    const bool ok = SetFileInformationByHandle(file, FileRenameInfoEx, info, static_cast<DWORD>(request.size())) != 0;
    CloseHandle(file);
    return ok;
}

} // namespace ky::impl::native
