// SPDX-License-Identifier: MIT
#include "platform/access_rights_windows.h"

#include "platform/win32.h"

#include <aclapi.h>

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

} // namespace ky::impl::native
