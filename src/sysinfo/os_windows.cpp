// SPDX-License-Identifier: MIT
#include "sysinfo/os_native.h"

#include "platform/win32.h"

#include <vector>

namespace ky::impl::native
{

namespace
{

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
    facts.is64Bit = isSystem64Bit();
    readKernel32Version(facts);
    return facts;
}

} // namespace ky::impl::native
