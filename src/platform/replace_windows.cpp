// SPDX-License-Identifier: MIT
#include "platform/replace_windows.h"

#include "platform/win32.h"

#include <aclapi.h>
#include <cstddef>
#include <cstring>
#include <vector>

namespace ky::impl::native
{

namespace
{

// FILE_RENAME_INFO as FileRenameInfoEx takes it; some headers keep this form from programs that run on older systems.
struct RenameRequest
{
    DWORD flags;
    HANDLE root;
    DWORD nameSize; ///< bytes
    wchar_t name[1];
};
static_assert(sizeof(RenameRequest) == sizeof(FILE_RENAME_INFO));

constexpr DWORD replaceIfExists = 1;
constexpr DWORD posixSemantics = 2;
constexpr auto fileRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);

} // namespace

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
    const std::size_t nameSize = to.size() * sizeof(wchar_t);
    std::vector<std::byte> bytes(sizeof(RenameRequest) + nameSize);
    auto* const request = reinterpret_cast<RenameRequest*>(bytes.data());
    request->flags = replaceIfExists | posixSemantics;
    request->nameSize = static_cast<DWORD>(nameSize);
    std::memcpy(request->name, to.data(), nameSize);
    const bool ok = SetFileInformationByHandle(file, fileRenameInfoEx, request, static_cast<DWORD>(bytes.size())) != 0;
    CloseHandle(file);
    return ok;
}

} // namespace ky::impl::native
