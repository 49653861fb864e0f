// SPDX-License-Identifier: MIT
#include "sysinfo/os_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <string>
#include <vector>

namespace ky::impl::native
{

namespace
{

/// The open key that holds what the version calls do not tell.
class VersionKey
{
public:
    VersionKey()
    {
        const wchar_t* const path = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, &mKey) != ERROR_SUCCESS)
            mKey = nullptr;
    }
    ~VersionKey()
    {
        if (mKey != nullptr)
            RegCloseKey(mKey);
    }
    VersionKey(const VersionKey&) = delete;
    VersionKey& operator=(const VersionKey&) = delete;

    std::string text(const wchar_t* name) const
    {
        wchar_t buffer[256] = {};
        DWORD size = sizeof(buffer) - sizeof(wchar_t);
        DWORD type = 0;
        if (mKey == nullptr ||
            RegQueryValueExW(mKey, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer), &size) != ERROR_SUCCESS ||
            type != REG_SZ)
            return {};
        return narrow(buffer);
    }

    DWORD number(const wchar_t* name) const
    {
        DWORD value = 0;
        DWORD size = sizeof(value);
        DWORD type = 0;
        const bool found = mKey != nullptr && RegQueryValueExW(mKey, name, nullptr, &type,
                                                               reinterpret_cast<BYTE*>(&value), &size) == ERROR_SUCCESS;
        return found && type == REG_DWORD ? value : 0;
    }

private:
    HKEY mKey = nullptr;
};

/// The call that hides nothing from programs without a manifest.
void readVersion(WindowsFacts& facts)
{
    using RtlGetVersion = LONG(WINAPI*)(OSVERSIONINFOEXW*);
    const HMODULE module = GetModuleHandleW(L"ntdll.dll");
    const FARPROC address = module != nullptr ? GetProcAddress(module, "RtlGetVersion") : nullptr;
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    if (address == nullptr || reinterpret_cast<RtlGetVersion>(reinterpret_cast<void*>(address))(&version) != 0)
        return;
    facts.major = version.dwMajorVersion;
    facts.minor = version.dwMinorVersion;
    facts.build = version.dwBuildNumber;
    facts.servicePackMajor = version.wServicePackMajor;
    facts.servicePackMinor = version.wServicePackMinor;
    facts.isServer = version.wProductType != VER_NT_WORKSTATION;
}

void readKernel32Version(WindowsFacts& facts)
{
    const wchar_t* const file = L"kernel32.dll";
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(file, &ignored);
    std::vector<BYTE> data(size);
    void* found = nullptr;
    UINT length = 0;
    if (size == 0 || !GetFileVersionInfoW(file, 0, size, data.data()) ||
        !VerQueryValueW(data.data(), L"\\", &found, &length) || length < sizeof(VS_FIXEDFILEINFO))
        return;
    const auto& info = *static_cast<const VS_FIXEDFILEINFO*>(found);
    facts.kernel32 = {HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS), HIWORD(info.dwFileVersionLS),
                      LOWORD(info.dwFileVersionLS)};
}

bool isSystem64Bit()
{
    SYSTEM_INFO info = {};
    GetNativeSystemInfo(&info);
    return info.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64 ||
           info.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_ARM64;
}

} // namespace

OsFacts queryOs()
{
    WindowsFacts facts;
    readVersion(facts);
    const VersionKey key;
    facts.registryMajor = key.number(L"CurrentMajorVersionNumber");
    facts.registryMinor = key.number(L"CurrentMinorVersionNumber");
    facts.registryBuild = key.text(L"CurrentBuild");
    facts.editionId = key.text(L"EditionID");
    facts.releaseId = key.text(L"ReleaseId");
    facts.is64Bit = isSystem64Bit();
    readKernel32Version(facts);
    return facts;
}

} // namespace ky::impl::native
